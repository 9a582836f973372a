#include "tests/runtime/failing_allocations.h"

#include <cstdlib>
#include <new>

namespace cimple::sample {

thread_local long allocations_left = -1;
thread_local bool fails_once = false;
thread_local long live = 0;
std::atomic<long> failures = 0;

namespace {

void* allocate(std::size_t size) noexcept {
    if (allocations_left == 0) {
        ++failures;
        allocations_left = fails_once ? -1 : 0;
        return nullptr;
    }
    if (allocations_left > 0) {
        --allocations_left;
    }
    void* block = std::malloc(size);
    if (block != nullptr) {
        ++live;
    }
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr) {
        --live;
        std::free(block);
    }
}

} // namespace
} // namespace cimple::sample

using cimple::sample::allocate;
using cimple::sample::release;

void* operator new(std::size_t size) {
    if (void* block = allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
