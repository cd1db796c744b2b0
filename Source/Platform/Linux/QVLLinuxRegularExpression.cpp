#include "QVLLinuxRegularExpression.h"

#include "QVLUTF8.h"

#include <glib.h>

#include <utility>

namespace {

struct Release {
    void operator()(GRegex* regex) const { g_regex_unref(regex); }
    void operator()(GMatchInfo* match) const { g_match_info_free(match); }
    void operator()(GError* error) const { g_error_free(error); }
};
template <class Object>
using Owned = std::unique_ptr<Object, Release>;

using Groups = std::vector<std::optional<std::string>>;

/// No value for a group that took no part.
std::optional<std::string> groupAt(int index, const GMatchInfo* match, std::string_view text) {
    int start = -1;
    int end = -1;
    if (!g_match_info_fetch_pos(match, index, &start, &end) || start < 0) {
        return std::nullopt;
    }
    return std::string(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
}

} // namespace

class QVLLinuxRegularExpression::Program {
public:
    explicit Program(Owned<GRegex> regex) : m_regex(std::move(regex)) {}

    [[nodiscard]] Groups firstMatch(std::string_view text) const {
        GMatchInfo* found = nullptr;
        const gboolean isMatch =
            g_regex_match_full(m_regex.get(), text.empty() ? "" : text.data(), static_cast<gssize>(text.size()),
                               /*start_position=*/0, GRegexMatchFlags(0), &found, nullptr);
        const Owned<GMatchInfo> match(found);
        Groups groups;
        if (isMatch) {
            for (int index = 0; index <= g_regex_get_capture_count(m_regex.get()); ++index) {
                groups.push_back(groupAt(index, match.get(), text));
            }
        }
        return groups;
    }

private:
    Owned<GRegex> m_regex;
};

QVLResult<std::shared_ptr<const QVLRegularExpression>> QVLRegularExpression::compile(const std::string& pattern) {
    using Result = QVLResult<std::shared_ptr<const QVLRegularExpression>>;
    if (pattern.find('\0') != std::string::npos || !qvl::isValidUTF8(pattern)) {
        return Result::failure("the pattern is not UTF-8 text");
    }
    constexpr int kOptions = G_REGEX_MULTILINE | G_REGEX_OPTIMIZE | G_REGEX_NEWLINE_ANYCRLF;
    GError* error = nullptr;
    Owned<GRegex> regex(g_regex_new(pattern.c_str(), GRegexCompileFlags(kOptions), GRegexMatchFlags(0), &error));
    if (!regex) {
        return Result::failure(Owned<GError>(error)->message);
    }
    auto program = std::make_unique<const QVLLinuxRegularExpression::Program>(std::move(regex));
    return Result::success(std::make_shared<const QVLLinuxRegularExpression>(std::move(program)));
}

QVLLinuxRegularExpression::QVLLinuxRegularExpression(std::unique_ptr<const Program> program)
    : m_program(std::move(program)) {}

QVLLinuxRegularExpression::~QVLLinuxRegularExpression() = default;

std::vector<std::optional<std::string>> QVLLinuxRegularExpression::firstMatch(std::string_view text) const {
    // The library takes the text's validity for granted.
    return qvl::isValidUTF8(text) ? m_program->firstMatch(text) : Groups();
}
