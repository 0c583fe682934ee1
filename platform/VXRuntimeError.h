// The framework's run-time error: carries one message text.
#pragma once

#include <exception>
#include <string>

class VXRuntimeError : public std::exception {
public:
    // A null text gives an empty message.
    explicit VXRuntimeError(const char* const& text) : m_strMessage(text ? text : "") {}
    explicit VXRuntimeError(const std::string& text) : m_strMessage(text) {}
    ~VXRuntimeError() override = default;

    const char* what() const noexcept override { return m_strMessage.c_str(); }

private:
    std::string m_strMessage;
};
