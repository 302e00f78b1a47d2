// Values decoded from the front of a fuzz input, the same under libFuzzer and
// in the replay programs, so that a saved input always decodes to the same
// document. Once the input is used up every value is its smallest: false,
// the lower bound, the first entry, "".
#ifndef QUARL_FUZZ_BYTE_SOURCE_H
#define QUARL_FUZZ_BYTE_SOURCE_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace quarl::fuzz {

class ByteSource {
public:
    ByteSource(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

    bool ConsumeBool() { return (Byte() & 1) != 0; }

    // The next eight bytes, least significant first.
    uint64_t ConsumeUint64()
    {
        uint64_t value = 0;
        for (int i = 0; i < 8; ++i) value |= static_cast<uint64_t>(Byte()) << (8 * i);
        return value;
    }

    // A value in [min, max] from as many bytes as the range needs.
    int ConsumeIntInRange(int min, int max)
    {
        const uint64_t range = static_cast<uint64_t>(static_cast<int64_t>(max) - min);
        uint64_t value = 0;
        for (uint64_t left = range; left > 0; left >>= 8) value = (value << 8) | Byte();
        return static_cast<int>(min + static_cast<int64_t>(value % (range + 1)));
    }

    // A finite double of any sign and magnitude.
    double ConsumeFiniteDouble()
    {
        const auto mantissa = static_cast<int64_t>(ConsumeUint64());
        return std::ldexp(static_cast<double>(mantissa), ConsumeIntInRange(-1100, 960));
    }

    template <typename T, size_t N>
    const T& PickValueInArray(const T (&values)[N])
    {
        return values[ConsumeIntInRange(0, static_cast<int>(N) - 1)];
    }
    template <typename T>
    T PickValueInArray(std::initializer_list<T> values)
    {
        return values.begin()[ConsumeIntInRange(0, static_cast<int>(values.size()) - 1)];
    }

    // Up to `maxLength` bytes; the first byte says how many.
    std::string ConsumeString(size_t maxLength)
    {
        size_t length = Byte() % (maxLength + 1);
        std::string text;
        while (length-- > 0 && m_pos < m_size) text.push_back(static_cast<char>(Byte()));
        return text;
    }

private:
    uint8_t Byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }

    const uint8_t* m_data;
    size_t m_size;
    size_t m_pos = 0;
};

}  // namespace quarl::fuzz

#endif
