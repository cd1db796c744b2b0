#pragma once

#include "Notes.h"

#include <Quorvel/QVLInputsManager.h>
#include <Quorvel/Quorvel.h>

#include <functional>
#include <map>
#include <memory>

/// Makes the rules' inputs of the application's state, and tells the debug console how long each one took.
class InputsManager final : public QVLInputsManager {
public:
    InputsManager(std::shared_ptr<QVLQuorvel> engine, const Notes& notes);

    void updateInputsNow() override;
    [[nodiscard]] double mainThreadGenerationTime() const override { return m_totalTime.count(); }
    [[nodiscard]] double totalGenerationTime() const override { return m_totalTime.count(); }
    [[nodiscard]] double generationTimeForInput(const std::string& key) const override;

private:
    using Source = std::function<QVLJSONValue()>;
    [[nodiscard]] std::map<std::string, Source> sources() const;

    const std::shared_ptr<QVLQuorvel> m_engine;
    const Notes& m_notes;
    QVLTimeInterval m_totalTime{0};
    std::map<std::string, QVLTimeInterval> m_times;
};
