#pragma once

#include <QWidget>

#include <functional>
#include <string>

class QLabel;
class QPushButton;

/// A bar that asks the user something, with a button to accept and one to refuse.
class PromptBar final : public QWidget {
    Q_OBJECT

public:
    struct Prompt {
        QString text;
        /// The event that counts how often it was shown.
        std::string shownEvent;
        QString accept;
        QString refuse;
        std::function<void()> accepted;
        std::function<void()> refused;
    };

    explicit PromptBar(QWidget* parent = nullptr);

    /// The bar hides when it is answered.
    void show(Prompt prompt);

private:
    void answer(std::function<void()> Prompt::*reaction);

    Prompt m_prompt;
    QLabel* m_label;
    QPushButton* m_accept;
    QPushButton* m_refuse;
};
