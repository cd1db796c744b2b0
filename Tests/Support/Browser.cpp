#include "Browser.h"

#include "QVLJSONSerialization.h"

#include <httplib.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <vector>

extern char** environ;

namespace {

constexpr const char* kBrowser = "/usr/bin/chromium";
constexpr const char* kDriver = "/usr/bin/chromedriver";
/// Ends the driver when the test dies first.
constexpr const char* kLeash = "/usr/bin/setpriv";
constexpr int kPatienceInMilliseconds = 20000;

/// The port that the driver says it listens on; throws when it ends without saying so.
int portFrom(int output) {
    constexpr std::string_view kBeforePort = "successfully on port ";
    std::string said;
    char piece[256];
    for (ssize_t count = 0; (count = ::read(output, piece, sizeof piece)) > 0;) {
        said.append(piece, static_cast<std::size_t>(count));
        const std::size_t found = said.find(kBeforePort);
        if (found != std::string::npos && said.find('.', found) != std::string::npos) {
            return std::stoi(said.substr(found + kBeforePort.size()));
        }
    }
    throw std::runtime_error("the browser's driver does not start: " + said);
}

std::string fileURL(const std::string& path) {
    static constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x80 && (std::isalnum(byte) || character == '/' || character == '.' || character == '-')) {
            url += character;
        } else {
            url.append({'%', kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]});
        }
    }
    return url;
}

} // namespace

bool Browser::isInstalled() {
    return std::filesystem::exists(kBrowser) && std::filesystem::exists(kDriver) && std::filesystem::exists(kLeash);
}

Browser::Browser() {
    startDriver();
    try {
        startSession();
    } catch (...) {
        stopDriver();
        throw;
    }
}

Browser::~Browser() {
    m_client->Delete("/session/" + m_session);
    stopDriver();
}

void Browser::startDriver() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string words[] = {kLeash, "--pdeathsig", "TERM", kDriver, "--port=0"};
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                               words[3].data(), words[4].data(), nullptr};
    const int error = ::posix_spawn(&m_driver, kLeash, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    if (error != 0) {
        ::close(ends[0]);
        throw std::runtime_error("cannot start the browser's driver");
    }
    try {
        m_client = std::make_unique<httplib::Client>("127.0.0.1", portFrom(ends[0]));
    } catch (...) {
        ::close(ends[0]);
        stopDriver();
        throw;
    }
    ::close(ends[0]);
    m_client->set_read_timeout(std::chrono::milliseconds(3 * kPatienceInMilliseconds));
}

void Browser::startSession() {
    // Over a pipe the browser ends with its driver, whatever ends that.
    std::vector<QVLJSONValue> options = {"--headless=new",          "--disable-gpu",
                                         "--disable-dev-shm-usage", "--no-first-run",
                                         "--window-size=1200,900",  "--user-data-dir=" + m_profile.path(),
                                         "--remote-debugging-pipe"};
    if (::geteuid() == 0) {
        // Chromium refuses to put itself into a sandbox when it runs as root.
        options.emplace_back("--no-sandbox");
    }
    const QVLJSONDictionary chromium = {{"binary", kBrowser}, {"args", QVLJSONArray(options)}};
    const QVLJSONDictionary wanted = {{"browserName", "chrome"},
                                      {"goog:chromeOptions", chromium},
                                      {"timeouts", QVLJSONDictionary{{"script", kPatienceInMilliseconds}}}};
    const QVLJSONDictionary capabilities = {{"alwaysMatch", wanted}};
    const QVLJSONValue session = command("", QVLJSONDictionary{{"capabilities", capabilities}});
    m_session = session.dictionaryOrEmpty().valueForKey("sessionId").qvl_castToStringValue().value();
}

void Browser::stopDriver() {
    ::kill(m_driver, SIGTERM);
    ::waitpid(m_driver, nullptr, 0);
}

QVLJSONValue Browser::command(const std::string& path, const QVLJSONValue& body) const {
    const std::string address = "/session" + (m_session.empty() ? "" : "/" + m_session) + path;
    const auto answer =
        m_client->Post(address, QVLJSONSerialization::dataWithJSONObject(body).text, "application/json");
    if (!answer || answer->status != 200) {
        throw std::runtime_error("the browser refuses " + address + ": " + (answer ? answer->body : "no answer"));
    }
    return QVLJSONSerialization::JSONObjectWithData(answer->body).value.dictionaryOrEmpty().valueForKey("value");
}

void Browser::open(const std::string& path) {
    command("/url", QVLJSONDictionary{{"url", fileURL(path)}});
}

QVLJSONValue Browser::run(const std::string& script, const QVLJSONArray& arguments) const {
    return command("/execute/sync", QVLJSONDictionary{{"script", script}, {"args", arguments}});
}

void Browser::waitUntil(const std::string& expression) const {
    const std::string script = "const done = arguments[0];\n"
                               "const look = () => (" +
                               expression + ") ? done() : setTimeout(look, 5);\nlook();";
    command("/execute/async", QVLJSONDictionary{{"script", script}, {"args", QVLJSONArray()}});
}

void Browser::pressControlEnter() const {
    constexpr const char* kControl = "\xEE\x80\x89";
    constexpr const char* kEnter = "\xEE\x80\x87";
    std::vector<QVLJSONValue> strokes;
    for (const char* key : {kControl, kEnter}) {
        strokes.emplace_back(QVLJSONDictionary{{"type", "keyDown"}, {"value", key}});
    }
    for (const char* key : {kEnter, kControl}) {
        strokes.emplace_back(QVLJSONDictionary{{"type", "keyUp"}, {"value", key}});
    }
    const QVLJSONDictionary keyboard = {{"type", "key"}, {"id", "keyboard"}, {"actions", QVLJSONArray(strokes)}};
    command("/actions", QVLJSONDictionary{{"actions", QVLJSONArray{keyboard}}});
}

void Browser::setColorScheme(const std::string& scheme) const {
    const QVLJSONDictionary feature = {{"name", "prefers-color-scheme"}, {"value", scheme}};
    const QVLJSONDictionary parameters = {{"features", QVLJSONArray{feature}}};
    command("/goog/cdp/execute", QVLJSONDictionary{{"cmd", "Emulation.setEmulatedMedia"}, {"params", parameters}});
}

void Browser::setWidth(int width) const {
    const QVLJSONDictionary parameters = {
        {"width", width}, {"height", 800}, {"deviceScaleFactor", 1}, {"mobile", false}};
    command("/goog/cdp/execute",
            QVLJSONDictionary{{"cmd", "Emulation.setDeviceMetricsOverride"}, {"params", parameters}});
}
