#include "PromptBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

PromptBar::PromptBar(QWidget* parent)
    : QWidget(parent), m_label(new QLabel(this)), m_accept(new QPushButton(this)), m_refuse(new QPushButton(this)) {
    auto* const layout = new QHBoxLayout(this);
    layout->addWidget(m_label, 1);
    layout->addWidget(m_refuse);
    layout->addWidget(m_accept);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    connect(m_accept, &QPushButton::clicked, this, [this] { answer(&Prompt::accepted); });
    connect(m_refuse, &QPushButton::clicked, this, [this] { answer(&Prompt::refused); });
    hide();
}

void PromptBar::show(Prompt prompt) {
    m_prompt = std::move(prompt);
    m_label->setText(m_prompt.text);
    m_accept->setText(m_prompt.accept);
    m_refuse->setText(m_prompt.refuse);
    setVisible(true);
}

void PromptBar::answer(std::function<void()> Prompt::*reaction) {
    hide();
    const std::function<void()> react = m_prompt.*reaction;
    react();
}
