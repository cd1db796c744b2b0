#include "ConsoleTest.h"

#include "QVLJSONSerialization.h"

#include <QClipboard>
#include <QToolButton>

#include <random>
#include <string_view>

namespace {

using namespace std::string_view_literals;

/// Texts that are likely to be taken for something, and then spoilt.
class TextMaker final {
public:
    QString next() {
        static const std::vector<QString> kSeeds = {"",
                                                    "42",
                                                    "-1.5e-7",
                                                    "true",
                                                    "null",
                                                    "[1,{\"a\":\"\\u00e9\"}]",
                                                    "{\"a\":[]}",
                                                    "2026-11-23 14:30:15",
                                                    "yesterday at 5pm",
                                                    "3 weeks ago",
                                                    "a text"};
        QString text = kSeeds[m_random() % kSeeds.size()];
        for (auto changes = m_random() % 4; changes > 0; --changes) {
            const auto position = static_cast<qsizetype>(m_random() % static_cast<std::size_t>(text.size() + 1));
            m_random() % 3 == 0 ? text.remove(position, 1) : text.insert(position, letter());
        }
        constexpr int kLong = 50'000;
        return m_random() % 50 == 0 ? text.repeated(kLong / (static_cast<int>(text.size()) + 1)) : text;
    }

private:
    QChar letter() {
        // Control and combining characters, joiners, marks that turn the direction, halves of surrogate pairs.
        static constexpr std::u16string_view kStrange =
            u"\0\x01\x1b\n\r\t\u0301\u200d\u200f\u202e\u2066\u2028\ufeff\uffff\xd83d\xde00\xdc00"
            u"\u0663\u066b\u2212"sv;
        return m_random() % 2 == 0 ? QChar(kStrange[m_random() % kStrange.size()])
                                   : QChar(static_cast<char16_t>(m_random()));
    }

    std::mt19937 m_random{20261123}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts on every run
};

class ValueEditorFuzzTest : public ConsoleTest {
protected:
    ValueEditorFuzzTest() {
        window.resize(400, 30);
        view.resize(400, 30);
        window.show();
    }

    /// Types or pastes over what is there and presses Return.
    void enter(const QString& text, bool isPasted) {
        click(view.valueButton());
        ASSERT_TRUE(view.isEditing());
        view.editValueTextField()->selectAll();
        if (isPasted) {
            QApplication::clipboard()->setText(text);
            view.editValueTextField()->paste();
        } else {
            view.editValueTextField()->setText(text);
        }
        QTest::keyClick(view.editValueTextField(), Qt::Key_Return);
        ASSERT_FALSE(view.isEditing());
    }

    QWidget window;
    QVLDebugValueView view{&window};
};

TEST_F(ValueEditorFuzzTest, AnyTextForAnyTypeGivesAValueThatCanBeWrittenAndReadsBackAsItself) {
    const std::vector<std::pair<QVLDebugValue, QVLDebugValueType>> shown = {
        {QVLJSONValue(QVLJSONArray{1}), QVLDebugValueTypeJSON},
        {QVLJSONValue("text"), QVLDebugValueTypeString},
        {QVLJSONValue(1), QVLDebugValueTypeNumber},
        {QVLJSONValue(nullptr), QVLDebugValueTypeNull},
        {platform.runLoop->now(), QVLDebugValueTypeDate}};
    TextMaker texts;
    for (int round = 0; round < 1500; ++round) {
        const auto& [value, type] = shown[static_cast<std::size_t>(round) % shown.size()];
        view.setOverrideValue({});
        view.setValue(value, type);
        enter(texts.next(), round % 2 == 0);
        const QVLDebugValue entered = view.overrideValue();
        const auto written = QVLJSONSerialization::dataWithFragment(entered.JSONValue());
        EXPECT_TRUE(entered.isNothing() || entered.date() || written) << round;
        EXPECT_EQ(view.clearButton()->isVisible(), !entered.isNothing());
        // Nothing is read back from what a row of null shows.
        if (!entered.isNothing() && type != QVLDebugValueTypeNull) {
            click(view.valueButton());
            QTest::keyClick(view.editValueTextField(), Qt::Key_Return);
            EXPECT_EQ(view.overrideValue(), entered) << round << ": " << view.stringValue().value_or("none");
        }
        if (round % 100 == 0) {
            EXPECT_FALSE(view.grab().isNull());
        }
    }
}

} // namespace
