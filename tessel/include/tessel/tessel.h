// tessel: the string and exception classes that cross quarl's exported
// interface. TxString carries paths and messages; Exception is what the
// reader's reference-returning accessors throw.
#ifndef TESSEL_TESSEL_H
#define TESSEL_TESSEL_H

#include <cstdint>
#include <string>

#if defined(TESSEL_BUILDING)
#define TESSEL_API __attribute__((visibility("default")))
#else
#define TESSEL_API
#endif

namespace tessel {

// A byte string. Paths are bytes and pass to the file layer unchanged.
class TESSEL_API TxString : public std::string {
public:
    TxString() = default;
    TxString(const char* text);         // NOLINT: literals convert implicitly
    TxString(const std::string& text);  // NOLINT
    TxString(const TxString&) = default;
    TxString(TxString&&) noexcept = default;
    ~TxString();

    TxString& operator=(const TxString&) = default;
    TxString& operator=(TxString&&) noexcept = default;
    TxString& operator=(const char* text);
};

// Thrown by value. It deliberately has no base class, so a handler for
// std::exception does not see it: a host catches it as tessel::Exception.
class TESSEL_API Exception {
public:
    Exception(const TxString& module, const TxString& file, int32_t line, int32_t code,
              const TxString& message);
    Exception(const Exception&);
    Exception& operator=(const Exception&);
    ~Exception();

    const TxString& Module() const { return m_module; }
    const TxString& File() const { return m_file; }
    int32_t Line() const { return m_line; }
    int32_t Code() const { return m_code; }
    const TxString& Message() const { return m_message; }

private:
    TxString m_module;
    TxString m_file;
    int32_t m_line;
    int32_t m_code;
    TxString m_message;
};

}  // namespace tessel

#endif
