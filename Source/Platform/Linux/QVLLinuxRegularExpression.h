#pragma once

#include "QVLRegularExpression.h"

#include <memory>

/// A pattern compiled by GLib. Lines end with "\n", "\r" or both, and "." matches none of them. Text that is not UTF-8
/// matches nothing.
class QVLLinuxRegularExpression final : public QVLRegularExpression {
public:
    class Program;
    explicit QVLLinuxRegularExpression(std::unique_ptr<const Program> program);
    QVLLinuxRegularExpression(const QVLLinuxRegularExpression&) = delete;
    QVLLinuxRegularExpression& operator=(const QVLLinuxRegularExpression&) = delete;
    ~QVLLinuxRegularExpression() override;

    [[nodiscard]] std::vector<std::optional<std::string>> firstMatch(std::string_view text) const override;

private:
    std::unique_ptr<const Program> m_program;
};
