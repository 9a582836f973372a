// Where the parts of the product stand beside this program.
#ifndef TVR_HOST_TVRCIM_PLACES_H
#define TVR_HOST_TVRCIM_PLACES_H

#include <filesystem>
#include <string>

namespace tvrcim {

// Each is sought in the build tree that this program is in, or where it is installed, in most cases
// at a place relative to this program. Throws Usage_Error that names the place.
std::filesystem::path module_file();
std::filesystem::path mof_file();
std::filesystem::path simulator_directory();

std::filesystem::path own_file();

// Throws Cim_Error if the library without which the module reads no adapter cannot be opened.
void check_adapter_library();

} // namespace tvrcim

#endif
