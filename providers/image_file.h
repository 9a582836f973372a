// The files that firmware images come from.
#ifndef TVR_PROVIDERS_IMAGE_FILE_H
#define TVR_PROVIDERS_IMAGE_FILE_H

#include "runtime/array.h"

#include <string>

namespace cimple {

enum class Image_Written { whole, not_opened, not_whole };

// Writes an image to a new file or over a regular one. Where it can't be written whole, for lack of
// room, nothing of it stays. Never waits for the reader of a pipe.
Image_Written write_image(const std::string& file, const Array<uint8>& image);

// METHOD_COMPLETED if the file is there; else a line in the log and the result of the method.
uint32 check_image(const std::string& file);

// Removes the file and tells so in the log.
void remove_image(const std::string& file);

} // namespace cimple

#endif
