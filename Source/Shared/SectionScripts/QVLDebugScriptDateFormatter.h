#pragma once

#include "QVLDate.h"

#include <QLocale>

#include <string>

/// Dates in the locale's short form, with the time to the second, in the user's time zone. Stateless; any thread.
class QVLDebugScriptDateFormatter final {
public:
    [[nodiscard]] std::string stringFromDate(QVLDate date, const QLocale& locale = QLocale()) const;
};
