#include "tessel/tessel.h"

namespace tessel {

TxString::TxString(const char* text) : std::string(text ? text : "") {}

TxString::TxString(const std::string& text) : std::string(text) {}

TxString::~TxString() = default;

TxString& TxString::operator=(const char* text)
{
    assign(text ? text : "");
    return *this;
}

Exception::Exception(const TxString& module, const TxString& file, int32_t line, int32_t code,
                     const TxString& message)
    : m_module(module), m_file(file), m_line(line), m_code(code), m_message(message)
{
}

Exception::Exception(const Exception&) = default;

Exception& Exception::operator=(const Exception&) = default;

Exception::~Exception() = default;

}  // namespace tessel
