#include "BareScript.h"

#include <array>
#include <cstdio>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace {

JSValueRef memberOf(JSContextRef context, JSObjectRef object, const char* name) {
    const JSStringRef member = JSStringCreateWithUTF8CString(name);
    const JSValueRef value = JSObjectGetProperty(context, object, member, nullptr);
    JSStringRelease(member);
    return value;
}

} // namespace

BareScript::BareScript(const std::string& script) : m_context(JSGlobalContextCreate(nullptr)) {
    const JSStringRef source = makeString("var quorvel = {};" + script);
    JSEvaluateScript(m_context, source, nullptr, nullptr, 1, nullptr);
    JSStringRelease(source);
    m_object = JSValueToObject(m_context, memberOf(m_context, JSContextGetGlobalObject(m_context), "quorvel"), nullptr);
    m_process = JSValueToObject(m_context, memberOf(m_context, m_object, "process"), nullptr);
    if (!m_process || !JSObjectIsFunction(m_context, m_process)) {
        throw std::runtime_error("the workload's script does not load");
    }
    JSValueProtect(m_context, m_object);
    JSValueProtect(m_context, m_process);
}

BareScript::~BareScript() {
    JSValueUnprotect(m_context, m_process);
    JSValueUnprotect(m_context, m_object);
    JSGlobalContextRelease(m_context);
}

JSStringRef BareScript::makeString(const std::string& text) {
    return JSStringCreateWithUTF8CString(text.c_str());
}

std::string BareScript::bytesOf(JSStringRef text) {
    std::string bytes(JSStringGetMaximumUTF8CStringSize(text), '\0');
    bytes.resize(JSStringGetUTF8CString(text, bytes.data(), bytes.size()) - 1);
    return bytes;
}

JSStringRef BareScript::answer(JSStringRef inputs, JSStringRef journals) {
    const std::array<JSValueRef, 2> arguments = {JSValueMakeString(m_context, inputs),
                                                 JSValueMakeString(m_context, journals)};
    const JSValueRef answer =
        JSObjectCallAsFunction(m_context, m_process, m_object, arguments.size(), arguments.data(), nullptr);
    const JSStringRef text = answer ? JSValueToStringCopy(m_context, answer, nullptr) : nullptr;
    if (!text) {
        throw std::runtime_error("the workload's script failed");
    }
    return text;
}

std::size_t BareScript::run(JSStringRef inputs, JSStringRef journals) {
    const JSStringRef text = answer(inputs, journals);
    const JSChar* const characters = JSStringGetCharactersPtr(text);
    const std::size_t length = JSStringGetLength(text);
    const bool isObject = length > 1 && characters[0] == '{';
    JSStringRelease(text);
    if (!isObject) {
        throw std::runtime_error("the workload's script answers no object");
    }
    return length;
}

void writeBare(const std::string& bytes, const std::string& path, bool isDurable) {
    const std::string aside = path + ".aside";
    const int file = ::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    const bool isWritten = file >= 0 && ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    const bool isSynchronized = isWritten && (!isDurable || ::fsync(file) == 0);
    if (!isSynchronized || ::close(file) != 0 || std::rename(aside.c_str(), path.c_str()) != 0) {
        throw std::runtime_error("cannot write " + path);
    }
    if (isDurable) {
        const int directory = ::open(path.substr(0, path.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::fsync(directory);
        ::close(directory);
    }
}
