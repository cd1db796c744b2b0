#include "QVLJSONString.h"

#include "QVLJSONNodes.h"

namespace {

/// Never destroyed: queues still running at exit may read texts.
const std::string& emptyText() {
    static const auto* const text = new std::string;
    return *text;
}

} // namespace

QVLJSONNode::~QVLJSONNode() = default;

QVLJSONString::QVLJSONString(std::string text)
    : m_node(text.empty() ? QVLJSONNodePointer<Node>() : QVLJSONNodePointer<Node>::adopt(new Node(std::move(text)))) {}
QVLJSONString::QVLJSONString(std::string_view text) : QVLJSONString(std::string(text)) {}
QVLJSONString::QVLJSONString(const char* text) : QVLJSONString(std::string(text ? text : "")) {}
QVLJSONString::QVLJSONString(QVLJSONNodePointer<Node> node) noexcept : m_node(std::move(node)) {}

const std::string& QVLJSONString::text() const noexcept {
    return m_node ? m_node->text : emptyText();
}
