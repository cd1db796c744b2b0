#pragma once

#include "QVLExport.h"

#include <string>

/// The host's provider of inputs, as the debug console sees it. Implemented by the host; main thread.
class QVL_EXPORT QVLInputsManager {
public:
    virtual ~QVLInputsManager();

    /// Computes the inputs again and sets them on the engine.
    virtual void updateInputsNow() = 0;

    // Of the last computation, in seconds.
    [[nodiscard]] virtual double mainThreadGenerationTime() const = 0;
    [[nodiscard]] virtual double totalGenerationTime() const = 0;
    /// 0 for an input that it does not provide.
    [[nodiscard]] virtual double generationTimeForInput(const std::string& key) const = 0;
};
