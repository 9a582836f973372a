// Replaces the operators new and delete of the program: a thread counts its blocks and can let an
// allocation fail.
#pragma once

#include <atomic>

namespace cimple::sample {

extern thread_local long allocations_left; // until one fails; negative: none does
extern thread_local bool fails_once;       // after a failure none does
extern thread_local long live;             // blocks
extern std::atomic<long> failures;         // of all threads

} // namespace cimple::sample
