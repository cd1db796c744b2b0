#include "CommandReader.h"

#include <Quorvel/QVLMainRunLoop.h>

#include <array>
#include <cerrno>
#include <thread>

#include <unistd.h>

namespace host {

namespace {

void post(const LineHandler& handler, std::optional<std::string> line) {
    QVLMainRunLoop::mainRunLoop()->post([handler, line = std::move(line)] { handler(line); });
}

void postWholeLines(const LineHandler& handler, std::string& text) {
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
        post(handler, text.substr(0, end));
        text.erase(0, end + 1);
    }
}

void readAll(const LineHandler& handler) {
    std::array<char, 4096> chunk{};
    std::string text;
    ssize_t count = 0;
    while ((count = read(STDIN_FILENO, chunk.data(), chunk.size())) > 0 || (count < 0 && errno == EINTR)) {
        text.append(chunk.data(), static_cast<std::size_t>(count > 0 ? count : 0));
        postWholeLines(handler, text);
    }
    if (!text.empty()) {
        post(handler, text);
    }
    post(handler, std::nullopt);
}

} // namespace

void readLines(LineHandler handler) {
    std::thread([handler = std::move(handler)] { readAll(handler); }).detach();
}

} // namespace host
