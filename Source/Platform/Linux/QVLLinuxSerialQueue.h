#pragma once

#include "QVLSerialQueue.h"

#include <memory>
#include <string>

/// A serial queue on a detached thread, which starts with the first task and carries the end of the label as its name.
///
/// Queue and thread share the list of tasks: whichever goes last gives it back. A thread that the system refuses to
/// start is asked for again by the next task; the tasks wait until then.
class QVLLinuxSerialQueue final : public QVLSerialQueue {
public:
    explicit QVLLinuxSerialQueue(std::string label);
    QVLLinuxSerialQueue(const QVLLinuxSerialQueue&) = delete;
    QVLLinuxSerialQueue& operator=(const QVLLinuxSerialQueue&) = delete;
    ~QVLLinuxSerialQueue() override;

    void async(std::function<void()> task) override;
    [[nodiscard]] const std::string& label() const override { return m_label; }

private:
    struct Tasks;

    std::string m_label;
    std::shared_ptr<Tasks> m_tasks;
};
