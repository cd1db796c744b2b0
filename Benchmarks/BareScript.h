#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <cstddef>
#include <string>

/// The floor: the JavaScript engine alone, with the script and nothing of the library's around it.
class BareScript final {
public:
    explicit BareScript(const std::string& script);
    BareScript(const BareScript&) = delete;
    BareScript& operator=(const BareScript&) = delete;
    ~BareScript();

    /// An engine string; the caller releases it.
    [[nodiscard]] static JSStringRef makeString(const std::string& text);

    /// Calls `process` with the two texts and takes the answer's characters; returns how many there are.
    std::size_t run(JSStringRef inputs, JSStringRef journals);

private:
    JSGlobalContextRef m_context;
    JSObjectRef m_object = nullptr;
    JSObjectRef m_process = nullptr;
};

/// The other floor: the bytes in place of the file, as safely as the library writes them, and nothing else.
void writeBare(const std::string& bytes, const std::string& path);
