// memchr for the WebAssembly build, sixteen bytes at a time with SIMD: the
// reader finds every line end with it, and the C library's own looks at one
// machine word at a time. Linked in place of the C library's; compiled only
// with WebAssembly SIMD (QUARL_WEB_SIMD).
#include <wasm_simd128.h>

#include <cstddef>
#include <cstdint>

extern "C" void* memchr(const void* data, int byte, size_t size)
{
    const unsigned char* p = static_cast<const unsigned char*>(data);
    const unsigned char wanted = static_cast<unsigned char>(byte);
    const v128_t needle = wasm_i8x16_splat(static_cast<int8_t>(wanted));
    for (; size >= 16; p += 16, size -= 16) {
        const uint32_t found = wasm_i8x16_bitmask(wasm_i8x16_eq(wasm_v128_load(p), needle));
        if (found) return const_cast<unsigned char*>(p + __builtin_ctz(found));
    }
    for (; size > 0; ++p, --size)
        if (*p == wanted) return const_cast<unsigned char*>(p);
    return nullptr;
}
