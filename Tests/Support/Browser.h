#pragma once

#include "QVLJSONValue.h"
#include "TemporaryDirectory.h"

#include <memory>
#include <string>

#include <sys/types.h>

namespace httplib {
class Client;
}

/// A headless Chromium of its own with a fresh profile, driven over WebDriver, until it goes. Failures throw.
class Browser final {
public:
    Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;
    ~Browser();

    [[nodiscard]] static bool isInstalled();

    /// Opens a file and returns when it has been loaded.
    void open(const std::string& path);
    /// Loads the page again.
    void refresh() { command("/refresh", QVLJSONDictionary()); }
    /// Runs the body of a function in the page; what it returns, with null for nothing.
    QVLJSONValue run(const std::string& script, const QVLJSONArray& arguments = {}) const;
    /// Waits in the page until the expression holds; throws when it does not within 20 seconds.
    void waitUntil(const std::string& expression) const;
    /// Presses Control and Enter where the focus is.
    void pressControlEnter() const;
    /// Makes the page believe in "light" or "dark".
    void setColorScheme(const std::string& scheme) const;
    void setWidth(int width) const;

private:
    QVLJSONValue command(const std::string& path, const QVLJSONValue& body) const;
    void startDriver();
    void startSession();
    void stopDriver();

    TemporaryDirectory m_profile;
    pid_t m_driver = 0;
    std::unique_ptr<httplib::Client> m_client;
    std::string m_session;
};
