// The library that fetches files from elsewhere: libcurl, which is looked for when it is needed.
#ifndef TVR_ACCESS_TRANSFER_LIBRARY_H
#define TVR_ACCESS_TRANSFER_LIBRARY_H

namespace cimple {

// Opens it at one of its places, or null; the log tells each attempt. Debian's package libcurl4 has
// it at none of them: there a link named libcurl.so on the loader's path leads to it, as the
// package libcurl4-openssl-dev makes one.
void* openTransferLibrary();

} // namespace cimple

#endif
