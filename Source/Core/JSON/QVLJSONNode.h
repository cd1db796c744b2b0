#pragma once

#include "QVLExport.h"

#include <atomic>
#include <cstdint>
#include <utility>

/// Shared, immutable content behind a JSON value: a text, an array's elements, a dictionary's entries or a record.
///
/// Counted in place so that a value stays 16 bytes. The count is atomic: values may be copied and dropped on any
/// thread.
class QVL_EXPORT QVLJSONNode {
public:
    QVLJSONNode(const QVLJSONNode&) = delete;
    QVLJSONNode& operator=(const QVLJSONNode&) = delete;

    void retain() const noexcept { m_references.fetch_add(1, std::memory_order_relaxed); }

    void release() const noexcept {
        if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

protected:
    QVLJSONNode() = default;
    virtual ~QVLJSONNode();

private:
    mutable std::atomic<std::uint32_t> m_references{1};
};

/// Owning pointer to a node; empty by default. A copy shares. Where the node's type is only declared, the pointer can
/// be copied, moved, compared and dropped all the same.
template <class Node>
class QVLJSONNodePointer {
public:
    QVLJSONNodePointer() noexcept = default;
    QVLJSONNodePointer(const QVLJSONNodePointer& other) noexcept : m_node(other.m_node) {
        if (m_node) {
            m_node->retain();
        }
    }
    QVLJSONNodePointer(QVLJSONNodePointer&& other) noexcept : m_node(std::exchange(other.m_node, nullptr)) {}
    QVLJSONNodePointer& operator=(QVLJSONNodePointer other) noexcept {
        std::swap(m_node, other.m_node);
        return *this;
    }
    ~QVLJSONNodePointer() {
        if (m_node) {
            m_node->release();
        }
    }

    /// Takes over a count that the caller owns.
    [[nodiscard]] static QVLJSONNodePointer adopt(const Node* node) noexcept {
        QVLJSONNodePointer pointer;
        pointer.m_node = node;
        return pointer;
    }
    /// Adds a count of its own.
    [[nodiscard]] static QVLJSONNodePointer share(const Node* node) noexcept {
        if (node) {
            node->retain();
        }
        return adopt(node);
    }

    /// Hands the count to the caller.
    [[nodiscard]] const QVLJSONNode* take() noexcept { return std::exchange(m_node, nullptr); }
    const Node* operator->() const noexcept { return static_cast<const Node*>(m_node); }
    explicit operator bool() const noexcept { return m_node != nullptr; }
    friend bool operator==(const QVLJSONNodePointer& a, const QVLJSONNodePointer& b) noexcept {
        return a.m_node == b.m_node;
    }

private:
    const QVLJSONNode* m_node = nullptr;
};
