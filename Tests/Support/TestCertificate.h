#pragma once

#include "TemporaryDirectory.h"

#include <string>

/// A certificate made for one test, signed by itself, with its key. Valid for one hour.
class TestCertificate final {
public:
    explicit TestCertificate(const std::string& hostName);

    /// PEM; also the file to trust.
    [[nodiscard]] std::string certificatePath() const { return m_directory.path("certificate.pem"); }
    [[nodiscard]] std::string keyPath() const { return m_directory.path("key.pem"); }

private:
    TemporaryDirectory m_directory;
};
