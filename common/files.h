// Small text files, read and written without surprises: only regular files are read, nothing blocks
// on a pipe, descriptors are not inherited, and nobody but its owner can write to a file made here,
// whatever the process's mask. A link that neither root nor this process's user made is not
// followed to a file to be written.
#ifndef TVR_COMMON_FILES_H
#define TVR_COMMON_FILES_H

#include <cstdio>
#include <memory>
#include <string>

namespace cimple {

struct FileCloser {
    void operator()(FILE* stream) const noexcept { fclose(stream); }
};
using File = std::unique_ptr<FILE, FileCloser>;

// Null when the file can't be opened, with errno telling why, or is not a regular one.
File openToRead(const char* path) noexcept;
// Creates the file or empties it.
File openToWrite(const char* path) noexcept;
// So too, and takes the right to write away from others where the file has been there before. For
// files that this process believes when it reads them again.
File openSettingsToWrite(const char* path) noexcept;
// Creates the file or keeps what it holds; every write goes to its end.
File openToAppend(const char* path) noexcept;

// Reads one line without its line feed; what goes beyond `limit` characters is dropped. False at
// the end of the file.
bool readLine(FILE* stream, std::size_t limit, std::string& line);

} // namespace cimple

#endif
