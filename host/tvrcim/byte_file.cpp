#include "host/tvrcim/byte_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tvrcim {

using tvrhost::Cim_Value;
using tvrhost::Value_Error;

Cim_Value read_bytes(const std::string& file) {
    constexpr std::uintmax_t most = 8u << 20; // each byte becomes a value of its own
    std::error_code error;
    const auto kind = std::filesystem::status(file, error).type();
    if (kind == std::filesystem::file_type::not_found) {
        throw Value_Error("there is no file '" + file + "'");
    }
    if (kind != std::filesystem::file_type::regular) {
        throw Value_Error("'" + file + "' is no file");
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw Value_Error("file '" + file + "' cannot be read: " + std::strerror(errno));
    }
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error || size > most) {
        throw Value_Error("file '" + file + "' is larger than 8 MiB");
    }
    std::vector<Cim_Value> bytes;
    bytes.reserve(size);
    std::string block(64 * 1024, '\0');
    while (stream.read(block.data(), static_cast<std::streamsize>(block.size())),
           stream.gcount() > 0 && bytes.size() <= most) {
        for (std::streamsize i = 0; i < stream.gcount(); ++i) {
            bytes.emplace_back(static_cast<std::uint8_t>(block[static_cast<std::size_t>(i)]));
        }
    }
    if (stream.bad() || bytes.size() != size) {
        throw Value_Error("file '" + file + "' cannot be read whole");
    }
    return Cim_Value::array(tvrhost::Cim_Type::uint8, std::move(bytes));
}

} // namespace tvrcim
