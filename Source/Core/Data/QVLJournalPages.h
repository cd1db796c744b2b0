#pragma once

#include "QVLJSONDictionary.h"

#include <memory>
#include <string>
#include <vector>

/// The records of a journal collection as JSON, in pages that carry their text: one changed record costs its page and
/// not the whole collection. Immutable; a copy shares. Any thread.
class QVL_EXPORT QVLJournalPages final {
public:
    /// These pages with the given members in place of those under the same keys; nothing removes a member. The changes
    /// stand in the order of their keys, each key once.
    [[nodiscard]] QVLJournalPages with(const std::vector<QVLJSONDictionary::Entry>& changes) const;

    [[nodiscard]] QVLJSONDictionary dictionary() const;
    /// False when some record is not valid JSON, and there is therefore no text.
    [[nodiscard]] bool isWritable() const;
    /// Bytes that the text takes at most.
    [[nodiscard]] std::size_t compactTextSize() const;
    /// Appends the text that the dictionary would be written as.
    void appendCompactText(std::string& text) const;

    /// True when both are one and the same, which makes comparing unnecessary.
    [[nodiscard]] bool isIdentical(const QVLJournalPages& other) const noexcept { return m_pages == other.m_pages; }

private:
    /// In the order of their keys; none is empty.
    using Pages = std::vector<QVLJSONDictionary>;
    [[nodiscard]] const Pages& pages() const;

    /// Null for no pages.
    std::shared_ptr<const Pages> m_pages;
};
