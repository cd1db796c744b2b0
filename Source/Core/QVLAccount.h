#pragma once

#include "QVLObject.h"

#include <memory>
#include <optional>
#include <string>

/// What the host knows of one logged-in account. Filled in by the host before it asks for the account's engine; main
/// thread.
class QVL_EXPORT QVLAccount final : public QVLObject {
public:
    [[nodiscard]] static std::shared_ptr<QVLAccount> init() { return std::make_shared<QVLAccount>(); }

    /// Another account with the same values.
    [[nodiscard]] std::shared_ptr<QVLAccount> copy() const {
        auto account = init();
        account->m_accountDirectory = m_accountDirectory;
        account->m_userAgent = m_userAgent;
        account->m_userAuthToken = m_userAuthToken;
        return account;
    }

    /// Directory of the account's data; the engine keeps its files in the subdirectory "quorvel", which it makes.
    [[nodiscard]] const std::string& accountDirectory() const { return m_accountDirectory; }
    void setAccountDirectory(std::string directory) { m_accountDirectory = std::move(directory); }

    /// User agent of the account's service requests; no value sends none.
    [[nodiscard]] const std::optional<std::string>& userAgent() const { return m_userAgent; }
    void setUserAgent(std::optional<std::string> userAgent) { m_userAgent = std::move(userAgent); }

    /// Authentication token of the account's service requests; no value sends none.
    [[nodiscard]] const std::optional<std::string>& userAuthToken() const { return m_userAuthToken; }
    void setUserAuthToken(std::optional<std::string> token) { m_userAuthToken = std::move(token); }

    [[nodiscard]] std::string className() const override { return "QVLAccount"; }

private:
    std::string m_accountDirectory;
    std::optional<std::string> m_userAgent;
    std::optional<std::string> m_userAuthToken;
};
