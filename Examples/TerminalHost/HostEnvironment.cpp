#include "HostEnvironment.h"

#include "HostError.h"
#include "HostFiles.h"

#include <filesystem>
#include <system_error>

namespace host {

namespace {

QVLURL addressFrom(const std::string& text) {
    const std::optional<QVLURL> url = QVLURL::fromString(text);
    if (!url) {
        throw HostError("'" + text + "' is not an address");
    }
    return *url;
}

} // namespace

HostEnvironment::HostEnvironment(const Options& options, const QVLJSONDictionary& inputs,
                                 const std::shared_ptr<QVLLogger>& logger)
    : m_options(options),
      m_environment(*QVLQuorvelEnvironment::sharedEnvironment()),
      m_directory(options.directory, options.hasAccount ? kAccountSubdirectory : "") {
    checkScript();
    m_environment.setLogger(logger);
    m_environment.setApplicationSupportDirectory(m_directory.path());
    describeApplication(inputs);
    setAddresses();
    setTests();
    if (m_options.isUnlocked) {
        unlock();
    }
    if (!m_options.journalsPath.empty()) {
        m_directory.setJournals(readJSONFile(m_options.journalsPath, "journals file"));
    }
}

HostEnvironment::~HostEnvironment() {
    m_environment.setQuorvelForPreLogin(nullptr);
}

std::shared_ptr<QVLQuorvel> HostEnvironment::makeEngine() const {
    if (m_options.scriptPath) {
        return QVLQuorvel::initWithDirectory(m_directory.engineDirectory(), nullptr, nullptr);
    }
    if (!m_options.hasAccount) {
        return m_environment.quorvelForPreLogin();
    }
    const std::shared_ptr<QVLAccount> account = QVLAccount::init();
    account->setAccountDirectory(m_directory.engineDirectory());
    account->setUserAuthToken(m_options.authToken);
    account->setUserAgent(m_options.userAgent);
    return m_environment.quorvelWithAccount(account);
}

void HostEnvironment::describeApplication(const QVLJSONDictionary& inputs) const {
    m_environment.setAppVersion(inputs.valueForKey("appVersion").qvl_castToStringValue());
}

std::vector<Source> HostEnvironment::scriptSources() const {
    std::vector<Source> sources;
    if (m_server) {
        sources.push_back({"serving", shortPath(*m_options.servedDirectory) + " at " + m_server->addressOf("/")});
    }
    if (m_options.scriptPath) {
        sources.push_back({"script", shortPath(*m_options.scriptPath)});
        return sources;
    }
    const auto& remote = m_environment.remoteScriptURL();
    const std::string builtIn = shortPath(m_environment.bundleScriptFilePath().value_or("none"));
    sources.push_back({"script", m_options.hasAccount && !remote ? "none until there is a remote one" : builtIn});
    if (remote) {
        sources.push_back({"remote", remote->text()});
    }
    if (const auto& feed = m_environment.nightlyFeedURL()) {
        sources.push_back({"nightly", feed->text() + (m_options.isUnlocked ? "" : ", locked")});
    }
    return sources;
}

std::vector<Source> HostEnvironment::directorySources() const {
    return {{"directory", (m_directory.isTemporary() ? "temporary, " : "") + shortPath(m_directory.engineDirectory())}};
}

void HostEnvironment::checkScript() const {
    if (m_options.scriptPath) {
        checkIsReadable(*m_options.scriptPath, "script");
    } else if (!m_options.hasAccount && !m_environment.bundleScriptFilePath()) {
        throw HostError("the library lacks its built-in script; --script names another one");
    }
}

void HostEnvironment::setAddresses() {
    std::optional<std::string> script = m_options.remoteScript;
    std::optional<std::string> feed = m_options.nightlyFeed;
    if (m_options.servedDirectory) {
        m_server.emplace(*m_options.servedDirectory, m_options.port);
        script = script.value_or(m_server->addressOf("/quorvel.js"));
        if (!feed && std::filesystem::exists(*m_options.servedDirectory + "/nightly.json")) {
            feed = m_server->addressOf("/nightly.json");
        }
    }
    if (script) {
        m_environment.setRemoteScriptURL(addressFrom(*script));
    }
    if (feed) {
        m_environment.setNightlyFeedURL(addressFrom(*feed));
    }
}

void HostEnvironment::setTests() const {
    m_environment.setAbtestHost(m_options.testHost);
    m_environment.setAbtestGuids(m_options.tests);
}

void HostEnvironment::unlock() const {
    const auto path = m_environment.debugKeyFilePath();
    std::error_code error;
    const auto kind = std::filesystem::copy_options::overwrite_existing;
    if (!path || !std::filesystem::copy_file(TERMINAL_HOST_DEVELOPER_KEY, *path, kind, error)) {
        throw HostError("cannot copy the developer key file: " + error.message());
    }
}

} // namespace host
