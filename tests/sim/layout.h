// Sizes and offsets of the HBA API records, listed once for each header that declares them.
#pragma once

#include <cstddef>
#include <map>
#include <string>

using Layout = std::map<std::string, size_t>;

Layout ownLayout();

/// Empty where the published header is not installed.
Layout publishedLayout();
