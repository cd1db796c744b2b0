#pragma once

#include "QVLJavaScriptContext.h"

#include <JavaScriptCore/JavaScript.h>

/// A text kept as the engine's own string, which copies it on each use and so may be shared between machines and
/// threads.
class QVLLinuxJavaScriptText final : public QVLJavaScriptText {
public:
    /// Bytes that are not UTF-8 become replacement characters.
    explicit QVLLinuxJavaScriptText(std::string_view text);
    /// Takes over a string that the engine made; null is allowed.
    explicit QVLLinuxJavaScriptText(JSStringRef adopted) : m_string(adopted) {}
    QVLLinuxJavaScriptText(const QVLLinuxJavaScriptText&) = delete;
    QVLLinuxJavaScriptText& operator=(const QVLLinuxJavaScriptText&) = delete;
    ~QVLLinuxJavaScriptText() override;

    [[nodiscard]] JSStringRef string() const { return m_string; }
    /// The text as UTF-8, lone surrogates in three bytes that are not; no value without a string.
    [[nodiscard]] std::optional<std::string> UTF8() const;

private:
    JSStringRef m_string;
};
