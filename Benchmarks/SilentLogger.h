#pragma once

#include "QVLLogger.h"

/// Drops every line, so that no terminal is measured.
class SilentLogger final : public QVLLogger {
    void logDebugFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logInfoFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logWarnFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logErrorFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
};
