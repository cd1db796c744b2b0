#pragma once

#include "QVLDebugDataSourceObject.h"

/// A row of the inputs table.
class QVLDebugInputsDataSourceObject final : public QVLDebugDataSourceObject {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugInputsDataSourceObject>
    initWithKey(std::string key, QVLDebugValue value, QVLDebugValue overrideValue, double generationTime);

    /// Seconds that the host took to produce the input.
    [[nodiscard]] double generationTime() const { return m_generationTime; }

private:
    QVLDebugInputsDataSourceObject(std::string key, QVLDebugValue value, QVLDebugValue overrideValue,
                                   double generationTime);

    const double m_generationTime;
};
