#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A text in the JavaScript engine's own form, converted once and handed in as often as wanted. Immutable; any thread.
class QVLJavaScriptText {
public:
    virtual ~QVLJavaScriptText() = default;
};

/// What a thrown JavaScript exception says.
struct QVLJavaScriptException {
    /// The exception's own text, for example "ReferenceError: Can't find variable: x".
    std::string text;
    /// Line in the script, 1 for the first; 0 when unknown.
    int line = 0;
    /// One frame a line; empty when unknown.
    std::string stack;
};

/// What a call of a script's function came to.
struct QVLJavaScriptAnswer {
    /// The text form of what the function returned, as UTF-8; "undefined" when it threw, returned nothing or was no
    /// function. No value when even the text form could not be had. A lone surrogate leaves bytes that are not UTF-8.
    std::optional<std::string> text;
    /// The kind of the returned value, for a log line: "undefined", "string", "symbol", "object" and so on.
    std::string className;
    /// The run was ended from outside; nothing else of the answer counts.
    bool isInterrupted = false;
};

/// One JavaScript virtual machine with one global object.
///
/// Used by one thread at a time, which need not run a loop. Dropped on any thread while no call is under way. No
/// operation throws: what the script throws is kept as the last exception. A script may have removed or replaced
/// anything, so every look-up can come to nothing.
class QVLJavaScriptContext {
public:
    /// Asked from time to time while a script runs, on the running thread; true ends the run. Must not call the
    /// context.
    using InterruptionTest = std::function<bool()>;
    /// Answers the text form of a named member of the native function's argument, or no value when it has none.
    using ArgumentReader = std::function<std::optional<std::string>(std::string_view member)>;

    virtual ~QVLJavaScriptContext() = default;

    /// Runs source text at the top level; its result is ignored. False when the run was ended from outside.
    virtual bool evaluateScript(std::string_view source) = 0;

    /// Puts a native function of one object argument, returning undefined, on a member of a global object. Does nothing
    /// when there is no such object.
    virtual void setFunction(std::string_view globalObject, std::string_view member,
                             std::function<void(const ArgumentReader&)> function) = 0;

    /// Whether the global object has the member and it is neither undefined nor null.
    [[nodiscard]] virtual bool hasMember(std::string_view globalObject, std::string_view member) = 0;

    /// Calls a member of a global object, with that object as `this`, with text arguments.
    [[nodiscard]] virtual QVLJavaScriptAnswer
    callMember(std::string_view globalObject, std::string_view member,
               const std::vector<std::shared_ptr<const QVLJavaScriptText>>& arguments) = 0;

    /// The exception of the last operation that threw, once; no value when nothing has thrown since.
    [[nodiscard]] virtual std::optional<QVLJavaScriptException> takeException() = 0;
};

/// Makes contexts and texts. Any thread.
class QVLJavaScriptEngine {
public:
    virtual ~QVLJavaScriptEngine() = default;

    /// A fresh virtual machine, or null when there is no memory for one. `shouldInterrupt` may be empty.
    [[nodiscard]] virtual std::unique_ptr<QVLJavaScriptContext>
    makeContext(QVLJavaScriptContext::InterruptionTest shouldInterrupt) = 0;

    /// The text given as UTF-8; bytes that are not UTF-8 become replacement characters.
    [[nodiscard]] virtual std::shared_ptr<const QVLJavaScriptText> makeText(std::string_view text) = 0;
};
