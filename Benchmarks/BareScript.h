#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <chrono>
#include <cstddef>
#include <string>

/// How long everything runs before it is measured: the machine compiles in several stages what runs often.
inline constexpr std::chrono::milliseconds kWarmUp(1200);

/// The floor: the JavaScript engine alone, with the script and nothing of the library's around it.
class BareScript final {
public:
    explicit BareScript(const std::string& script);
    BareScript(const BareScript&) = delete;
    BareScript& operator=(const BareScript&) = delete;
    ~BareScript();

    /// An engine string; the caller releases it.
    [[nodiscard]] static JSStringRef makeString(const std::string& text);
    [[nodiscard]] static std::string bytesOf(JSStringRef text);

    /// Calls `process` with the two texts; the caller releases the answer.
    [[nodiscard]] JSStringRef answer(JSStringRef inputs, JSStringRef journals);
    /// The same, taking the answer's characters; returns how many there are.
    std::size_t run(JSStringRef inputs, JSStringRef journals);
    [[nodiscard]] JSGlobalContextRef context() const { return m_context; }

private:
    JSGlobalContextRef m_context;
    JSObjectRef m_object = nullptr;
    JSObjectRef m_process = nullptr;
};

/// The other floor: the bytes in place of the file, as safely as the library writes them, and nothing else.
void writeBare(const std::string& bytes, const std::string& path, bool isDurable = true);
