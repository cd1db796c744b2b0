#pragma once

#include "QVLDebugDataSourceObject.h"

#include <functional>
#include <memory>

class QVLQuorvel;
class QWidget;

/// A view of one row, which is made for an engine and then given its row.
class QVLDebugTableCellViewProtocol {
public:
    virtual ~QVLDebugTableCellViewProtocol() = default;

    [[nodiscard]] virtual const std::shared_ptr<QVLDebugDataSourceObject>& objectValue() const = 0;
    /// Never null.
    virtual void setObjectValue(const std::shared_ptr<QVLDebugDataSourceObject>& objectValue) = 0;
};

/// Makes a view of a row. The widget is expected to be a `QVLDebugTableCellViewProtocol` too.
using QVLDebugTableCellViewClass = std::function<QWidget*(const std::shared_ptr<QVLQuorvel>&)>;
