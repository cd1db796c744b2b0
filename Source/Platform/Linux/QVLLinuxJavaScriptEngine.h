#pragma once

#include "QVLJavaScriptContext.h"

/// Virtual machines of JavaScriptCore.
///
/// On first use the engine takes SIGUSR1 and SIGSEGV of the process for itself, and each machine may start a few
/// threads of its own, which end when they are idle.
class QVLLinuxJavaScriptEngine final : public QVLJavaScriptEngine {
public:
    [[nodiscard]] std::unique_ptr<QVLJavaScriptContext>
    makeContext(QVLJavaScriptContext::InterruptionTest shouldInterrupt) override;
    [[nodiscard]] std::shared_ptr<const QVLJavaScriptText> makeText(std::string_view text) override;
};
