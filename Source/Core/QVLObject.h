#pragma once

#include "QVLExport.h"

#include <cstddef>
#include <string>

/// The root of every object with identity: engines, records, managers.
///
/// Objects are owned by `std::shared_ptr` and never copied by assignment. A log line names the object that wrote it,
/// which is why the logging functions take one of these.
class QVL_EXPORT QVLObject {
public:
    QVLObject() = default;
    QVLObject(const QVLObject&) = delete;
    QVLObject& operator=(const QVLObject&) = delete;
    virtual ~QVLObject();

    /// The class's name as written in the source, for example "QVLJournalEvent".
    [[nodiscard]] virtual std::string className() const = 0;

    /// Text for a log line. The base answers class name and address: "<QVLJournals: 0x55d0c0ffee00>".
    [[nodiscard]] virtual std::string description() const;

    /// Equality by value where a class defines one; identity otherwise.
    [[nodiscard]] virtual bool isEqual(const QVLObject& other) const;

    /// Consistent with `isEqual`.
    [[nodiscard]] virtual std::size_t hash() const;

protected:
    /// What the base's `description` answers, for classes that only add to it.
    [[nodiscard]] std::string defaultDescription() const;
};

/// Stands in for a class, or for something outside the library, where a log line wants an object.
class QVL_EXPORT QVLNamedObject final : public QVLObject {
public:
    explicit QVLNamedObject(std::string name);

    [[nodiscard]] std::string className() const override;
    /// The bare name.
    [[nodiscard]] std::string description() const override;

private:
    std::string m_name;
};
