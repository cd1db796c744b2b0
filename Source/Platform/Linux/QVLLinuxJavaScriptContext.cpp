#include "QVLLinuxJavaScriptContext.h"

#include "QVLLinuxJavaScriptText.h"

#include <limits>
#include <utility>

extern "C" {
/// Exported by the library, though declared in none of its headers. The callback is asked on the running thread when a
/// run has taken this many seconds; true ends the run, and the limit then holds no longer unless it was set again.
void JSContextGroupSetExecutionTimeLimit(JSContextGroupRef group, double limit, bool (*callback)(JSContextRef, void*),
                                         void* callbackData);
}

namespace {

constexpr double kSecondsBetweenPolls = 0.1;

const char* kindOf(JSContextRef context, JSValueRef value) {
    switch (JSValueGetType(context, value)) {
    case kJSTypeUndefined:
        return "undefined";
    case kJSTypeNull:
        return "null";
    case kJSTypeBoolean:
        return "boolean";
    case kJSTypeNumber:
        return "number";
    case kJSTypeString:
        return "string";
    case kJSTypeSymbol:
        return "symbol";
    case kJSTypeBigInt:
        return "bigint";
    case kJSTypeObject:
        break;
    }
    return JSValueIsArray(context, value) ? "array" : "object";
}

bool hasValue(JSContextRef context, JSValueRef value) {
    return value && !JSValueIsUndefined(context, value) && !JSValueIsNull(context, value);
}

JSObjectRef objectFrom(JSContextRef context, JSValueRef value) {
    // An object's value is the object; converting would make one of a number or a text.
    return value && JSValueIsObject(context, value) ? const_cast<JSObjectRef>(value) : nullptr;
}

/// Null when reading threw.
JSValueRef memberOf(JSContextRef context, JSObjectRef object, std::string_view member, JSValueRef* exception) {
    const QVLLinuxJavaScriptText name(member);
    const JSValueRef value = JSObjectGetProperty(context, object, name.string(), exception);
    return *exception ? nullptr : value;
}

std::optional<std::string> textForm(JSContextRef context, JSValueRef value, JSValueRef* exception) {
    return QVLLinuxJavaScriptText(JSValueToStringCopy(context, value, exception)).UTF8();
}

/// The members of an exception may be anything, and reading them may throw again, which tells nothing more.
int lineOf(JSContextRef context, JSObjectRef exception) {
    JSValueRef ignored = nullptr;
    const JSValueRef line = memberOf(context, exception, "line", &ignored);
    if (!line || !JSValueIsNumber(context, line)) {
        return 0;
    }
    const double number = JSValueToNumber(context, line, &ignored);
    return number >= 1 && number <= std::numeric_limits<int>::max() ? static_cast<int>(number) : 0;
}

std::string stackOf(JSContextRef context, JSObjectRef exception) {
    JSValueRef ignored = nullptr;
    const JSValueRef stack = memberOf(context, exception, "stack", &ignored);
    return stack && JSValueIsString(context, stack) ? textForm(context, stack, &ignored).value_or("") : "";
}

QVLJavaScriptException descriptionOf(JSContextRef context, JSValueRef exception) {
    JSValueRef ignored = nullptr;
    QVLJavaScriptException description;
    const auto text = textForm(context, exception, &ignored);
    description.text = text ? *text : std::string("<") + kindOf(context, exception) + ">";
    if (const JSObjectRef object = objectFrom(context, exception)) {
        description.line = lineOf(context, object);
        description.stack = stackOf(context, object);
    }
    return description;
}

/// Argument values, kept from the garbage collector, which does not see those that stand in a vector.
class ProtectedTexts {
public:
    ProtectedTexts(JSContextRef context, const std::vector<std::shared_ptr<const QVLJavaScriptText>>& texts)
        : m_context(context) {
        m_values.reserve(texts.size());
        for (const auto& text : texts) {
            const auto* const own = static_cast<const QVLLinuxJavaScriptText*>(text.get());
            m_values.push_back(JSValueMakeString(context, own->string()));
            JSValueProtect(context, m_values.back());
        }
    }
    ProtectedTexts(const ProtectedTexts&) = delete;
    ProtectedTexts& operator=(const ProtectedTexts&) = delete;
    ~ProtectedTexts() {
        for (const JSValueRef value : m_values) {
            JSValueUnprotect(m_context, value);
        }
    }
    [[nodiscard]] const std::vector<JSValueRef>& values() const { return m_values; }

private:
    JSContextRef m_context;
    std::vector<JSValueRef> m_values;
};

/// What every function inherits from, taken from a fresh one, which no script can have changed.
JSValueRef functionPrototype(JSContextRef context) {
    const QVLLinuxJavaScriptText noName("");
    const JSObjectRef plain = JSObjectMakeFunctionWithCallback(
        context, noName.string(),
        [](JSContextRef callContext, JSObjectRef, JSObjectRef, std::size_t, const JSValueRef*, JSValueRef*) {
            return JSValueMakeUndefined(callContext);
        });
    return JSObjectGetPrototype(context, plain);
}

} // namespace

struct QVLLinuxJavaScriptContext::NativeFunction {
    QVLLinuxJavaScriptContext* owner;
    std::function<void(const ArgumentReader&)> function;
};

QVLLinuxJavaScriptContext::QVLLinuxJavaScriptContext(JSContextGroupRef group, InterruptionTest shouldInterrupt)
    : m_group(group),
      m_context(JSGlobalContextCreateInGroup(group, nullptr)),
      m_shouldInterrupt(std::move(shouldInterrupt)) {}

QVLLinuxJavaScriptContext::~QVLLinuxJavaScriptContext() {
    JSGlobalContextRelease(m_context);
    JSContextGroupRelease(m_group);
}

bool QVLLinuxJavaScriptContext::evaluateScript(std::string_view source) {
    beginOperation();
    const QVLLinuxJavaScriptText script(source);
    JSValueRef exception = nullptr;
    JSEvaluateScript(m_context, script.string(), /*thisObject=*/nullptr, /*sourceURL=*/nullptr,
                     /*startingLineNumber=*/1, &exception);
    keepException(exception);
    return !m_isInterrupted;
}

void QVLLinuxJavaScriptContext::setFunction(std::string_view globalObject, std::string_view member,
                                            std::function<void(const ArgumentReader&)> function) {
    beginOperation();
    const JSObjectRef object = globalObjectNamed(globalObject);
    if (!object) {
        return;
    }
    const QVLLinuxJavaScriptText name(member);
    JSValueRef exception = nullptr;
    JSObjectSetProperty(m_context, object, name.string(), makeFunction(std::move(function)), kJSPropertyAttributeNone,
                        &exception);
    keepException(exception);
}

bool QVLLinuxJavaScriptContext::hasMember(std::string_view globalObject, std::string_view member) {
    beginOperation();
    JSObjectRef object = nullptr;
    return hasValue(m_context, memberOfGlobalObject(globalObject, member, object));
}

QVLJavaScriptAnswer
QVLLinuxJavaScriptContext::callMember(std::string_view globalObject, std::string_view member,
                                      const std::vector<std::shared_ptr<const QVLJavaScriptText>>& arguments) {
    beginOperation();
    JSObjectRef object = nullptr;
    const JSObjectRef function = objectFrom(m_context, memberOfGlobalObject(globalObject, member, object));
    const JSValueRef value = function ? call(function, object, arguments) : JSValueMakeUndefined(m_context);
    QVLJavaScriptAnswer answer;
    if (!m_isInterrupted) {
        answer.text = textOf(value);
        answer.className = kindOf(m_context, value);
    }
    // Making the text runs the script's code too, and may be what was ended.
    answer.isInterrupted = m_isInterrupted;
    return answer;
}

std::optional<QVLJavaScriptException> QVLLinuxJavaScriptContext::takeException() {
    return std::exchange(m_exception, std::nullopt);
}

bool QVLLinuxJavaScriptContext::pollInterruption(JSContextRef, void* self) {
    auto& context = *static_cast<QVLLinuxJavaScriptContext*>(self);
    context.m_isInterrupted = context.m_isInterrupted || context.m_shouldInterrupt();
    // Set again even for a run that ends: where a native function was reading its argument, only that reading ends, and
    // the script that called the function has to be ended by the next poll.
    context.limitExecution();
    return context.m_isInterrupted;
}

JSValueRef QVLLinuxJavaScriptContext::callNativeFunction(JSContextRef context, JSObjectRef function, JSObjectRef,
                                                         std::size_t argumentCount, const JSValueRef arguments[],
                                                         JSValueRef*) {
    const auto& native = *static_cast<const NativeFunction*>(JSObjectGetPrivate(function));
    const JSObjectRef argument = argumentCount > 0 ? objectFrom(context, arguments[0]) : nullptr;
    native.function([&](std::string_view member) -> std::optional<std::string> {
        // Once a run is to end, no more of the script's getters may hold it up.
        if (!argument || native.owner->m_isInterrupted) {
            return std::nullopt;
        }
        JSValueRef ignored = nullptr;
        const JSValueRef value = memberOf(context, argument, member, &ignored);
        return hasValue(context, value) ? textForm(context, value, &ignored) : std::nullopt;
    });
    return JSValueMakeUndefined(context);
}

void QVLLinuxJavaScriptContext::beginOperation() {
    if (m_isInterrupted) {
        // When a promise's job was what ended, the machine still holds the end ready for whatever it does next.
        JSValueRef ignored = nullptr;
        JSValueToNumber(m_context, JSValueMakeNumber(m_context, 0), &ignored);
        m_isInterrupted = false;
    }
    if (m_shouldInterrupt) {
        limitExecution();
    }
}

void QVLLinuxJavaScriptContext::limitExecution() {
    JSContextGroupSetExecutionTimeLimit(m_group, kSecondsBetweenPolls, &pollInterruption, this);
}

JSObjectRef QVLLinuxJavaScriptContext::globalObjectNamed(std::string_view name) {
    JSValueRef exception = nullptr;
    const JSValueRef value = memberOf(m_context, JSContextGetGlobalObject(m_context), name, &exception);
    keepException(exception);
    return objectFrom(m_context, value);
}

/// Null when there is no such object or reading threw.
JSValueRef QVLLinuxJavaScriptContext::memberOfGlobalObject(std::string_view globalObject, std::string_view member,
                                                           JSObjectRef& object) {
    object = globalObjectNamed(globalObject);
    if (!object) {
        return nullptr;
    }
    JSValueRef exception = nullptr;
    const JSValueRef value = memberOf(m_context, object, member, &exception);
    keepException(exception);
    return value;
}

JSObjectRef QVLLinuxJavaScriptContext::makeFunction(std::function<void(const ArgumentReader&)> function) {
    m_functions.push_back(std::make_unique<NativeFunction>(NativeFunction{this, std::move(function)}));
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "Function";
    definition.attributes = kJSClassAttributeNoAutomaticPrototype;
    definition.callAsFunction = &callNativeFunction;
    const JSClassRef functionClass = JSClassCreate(&definition);
    const JSObjectRef object = JSObjectMake(m_context, functionClass, m_functions.back().get());
    JSClassRelease(functionClass);
    JSObjectSetPrototype(m_context, object, functionPrototype(m_context));
    return object;
}

/// Undefined when the call threw or there was nothing to call.
JSValueRef QVLLinuxJavaScriptContext::call(JSObjectRef function, JSObjectRef thisObject,
                                           const std::vector<std::shared_ptr<const QVLJavaScriptText>>& arguments) {
    const ProtectedTexts texts(m_context, arguments);
    JSValueRef exception = nullptr;
    const JSValueRef value = JSObjectCallAsFunction(m_context, function, thisObject, texts.values().size(),
                                                    texts.values().data(), &exception);
    const bool hasThrown = keepException(exception);
    return value && !hasThrown ? value : JSValueMakeUndefined(m_context);
}

std::optional<std::string> QVLLinuxJavaScriptContext::textOf(JSValueRef value) {
    JSValueRef exception = nullptr;
    auto text = textForm(m_context, value, &exception);
    keepException(exception);
    return text;
}

bool QVLLinuxJavaScriptContext::keepException(JSValueRef exception) {
    if (!exception) {
        return false;
    }
    // The end of a run from outside is no exception of the script's; describing one runs the script's code too.
    if (!m_isInterrupted) {
        auto description = descriptionOf(m_context, exception);
        if (!m_isInterrupted) {
            m_exception = std::move(description);
        }
    }
    return true;
}
