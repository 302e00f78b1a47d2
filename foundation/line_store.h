// The allocator of CTextFile's line store. It is a hook so that the tests
// can make the allocation fail on purpose; the library never changes it.
#ifndef QUARL_FOUNDATION_LINE_STORE_H
#define QUARL_FOUNDATION_LINE_STORE_H

#include <cstddef>

namespace quarl::detail {

// Returns a block of at least `bytes` that std::free releases, or null.
using LineStoreAllocFn = void* (*)(size_t bytes);

// The allocator in force; std::malloc unless a test replaced it.
extern LineStoreAllocFn g_lineStoreAlloc;

}  // namespace quarl::detail

#endif
