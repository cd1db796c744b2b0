#pragma once

#include "QVLDate.h"

#include <QLocale>

#include <optional>
#include <string_view>

/// The date that a text means, seen from `now` in the user's time zone; no value for text that means none.
///
/// Understood, in any case: "now", "today", "yesterday", "tomorrow"; "3 days ago", "in an hour", "2 weeks from now",
/// with seconds to years; weekdays in English or the locale's language, the coming one or with "last" or "next" before
/// it; "noon", "midnight", "5pm", "17:30"; dates and times in the locale's short forms, and in those of ISO 8601. A
/// time may follow a day, with or without "at". A day without a time is that day at the present time of day, a time
/// without a day is today's.
[[nodiscard]] std::optional<QVLDate> qvl_dateFromNaturalLanguage(std::string_view text, QVLDate now,
                                                                 const QLocale& locale = QLocale());
