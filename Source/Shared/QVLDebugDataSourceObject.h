#pragma once

#include "QVLDebugValue.h"

#include <memory>
#include <string>

/// One row of a table of the console. Main thread; made anew on every reload of its section.
class QVLDebugDataSourceObject {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugDataSourceObject> initWithKey(std::string key, QVLDebugValue value,
                                                                               QVLDebugValue overrideValue);
    QVLDebugDataSourceObject(const QVLDebugDataSourceObject&) = delete;
    QVLDebugDataSourceObject& operator=(const QVLDebugDataSourceObject&) = delete;
    virtual ~QVLDebugDataSourceObject();

    [[nodiscard]] const std::string& key() const { return m_key; }
    [[nodiscard]] const QVLDebugValue& value() const { return m_value; }
    /// Nothing without an override.
    [[nodiscard]] const QVLDebugValue& overrideValue() const { return m_overrideValue; }
    /// What was typed since the row was made; the engine announces only overrides that change something.
    void setOverrideValue(QVLDebugValue overrideValue) { m_overrideValue = std::move(overrideValue); }
    /// Decided from the value when the row was made.
    [[nodiscard]] QVLDebugValueType valueType() const { return m_valueType; }

    /// Tells rows of one table apart: the view of a row is kept for the row of the same identifier after a reload.
    [[nodiscard]] virtual std::string identifier() const { return m_key; }

protected:
    QVLDebugDataSourceObject(std::string key, QVLDebugValue value, QVLDebugValue overrideValue);

private:
    const std::string m_key;
    const QVLDebugValue m_value;
    QVLDebugValue m_overrideValue;
    const QVLDebugValueType m_valueType;
};
