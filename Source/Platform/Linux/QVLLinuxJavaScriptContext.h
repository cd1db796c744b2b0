#pragma once

#include "QVLJavaScriptContext.h"

#include <JavaScriptCore/JavaScript.h>

/// One machine of JavaScriptCore with one global context.
class QVLLinuxJavaScriptContext final : public QVLJavaScriptContext {
public:
    /// Takes over the group.
    QVLLinuxJavaScriptContext(JSContextGroupRef group, InterruptionTest shouldInterrupt);
    QVLLinuxJavaScriptContext(const QVLLinuxJavaScriptContext&) = delete;
    QVLLinuxJavaScriptContext& operator=(const QVLLinuxJavaScriptContext&) = delete;
    ~QVLLinuxJavaScriptContext() override;

    bool evaluateScript(std::string_view source) override;
    void setFunction(std::string_view globalObject, std::string_view member,
                     std::function<void(const ArgumentReader&)> function) override;
    [[nodiscard]] bool hasMember(std::string_view globalObject, std::string_view member) override;
    [[nodiscard]] QVLJavaScriptAnswer
    callMember(std::string_view globalObject, std::string_view member,
               const std::vector<std::shared_ptr<const QVLJavaScriptText>>& arguments) override;
    [[nodiscard]] std::optional<QVLJavaScriptException> takeException() override;

private:
    struct NativeFunction;

    static bool pollInterruption(JSContextRef context, void* self);
    static JSValueRef callNativeFunction(JSContextRef context, JSObjectRef function, JSObjectRef thisObject,
                                         std::size_t argumentCount, const JSValueRef arguments[],
                                         JSValueRef* exception);

    void beginOperation();
    void limitExecution();
    [[nodiscard]] JSObjectRef globalObjectNamed(std::string_view name);
    [[nodiscard]] JSValueRef memberOfGlobalObject(std::string_view globalObject, std::string_view member,
                                                  JSObjectRef& object);
    [[nodiscard]] JSObjectRef makeFunction(std::function<void(const ArgumentReader&)> function);
    [[nodiscard]] JSValueRef call(JSObjectRef function, JSObjectRef thisObject,
                                  const std::vector<std::shared_ptr<const QVLJavaScriptText>>& arguments);
    [[nodiscard]] std::optional<std::string> textOf(JSValueRef value);
    /// True when there was an exception.
    bool keepException(JSValueRef exception);

    JSContextGroupRef m_group;
    JSGlobalContextRef m_context;
    InterruptionTest m_shouldInterrupt;
    /// Functions that the machine may call for as long as it lives.
    std::vector<std::unique_ptr<NativeFunction>> m_functions;
    std::optional<QVLJavaScriptException> m_exception;
    bool m_isInterrupted = false;
};
