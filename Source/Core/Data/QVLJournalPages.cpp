#include "QVLJournalPages.h"

#include <algorithm>
#include <iterator>

namespace {

using Entry = QVLJSONDictionary::Entry;

/// Small enough to be written anew at every event, large enough that few pages make a collection.
constexpr std::size_t kFullPage = 64;
constexpr std::size_t kLargestPage = 2 * kFullPage;

bool comesBefore(const Entry& a, const Entry& b) {
    return a.key < b.key;
}

/// Adds the entries as one page or, when there are too many for one, as several full ones.
void addPages(std::vector<QVLJSONDictionary>& pages, const std::vector<Entry>& entries) {
    const std::size_t size = entries.size() <= kLargestPage ? kLargestPage : kFullPage;
    for (std::size_t start = 0; start < entries.size(); start += size) {
        const auto first = entries.begin() + static_cast<std::ptrdiff_t>(start);
        const auto last = entries.begin() + static_cast<std::ptrdiff_t>(std::min(start + size, entries.size()));
        pages.push_back(QVLJSONDictionary(std::vector<Entry>(first, last)).withCompactText());
    }
}

/// The page's entries with the changes in their place.
std::vector<Entry> changedEntries(const QVLJSONDictionary& page, const Entry* firstChange, const Entry* endOfChanges) {
    std::vector<Entry> entries;
    entries.reserve(page.count() + static_cast<std::size_t>(endOfChanges - firstChange));
    // Of two equal keys the union takes the one of the first range.
    std::set_union(firstChange, endOfChanges, page.begin(), page.end(), std::back_inserter(entries), comesBefore);
    std::erase_if(entries, [](const Entry& entry) { return entry.value.isNothing(); });
    return entries;
}

} // namespace

const QVLJournalPages::Pages& QVLJournalPages::pages() const {
    // Never destroyed: queues still running at exit may read pages.
    static const auto* const none = new Pages;
    return m_pages ? *m_pages : *none;
}

QVLJournalPages QVLJournalPages::with(const std::vector<Entry>& changes) const {
    Pages changed;
    const Entry* change = changes.data();
    const Entry* const endOfChanges = change + changes.size();
    for (auto page = pages().begin(); page != pages().end(); ++page) {
        // A page takes every key up to the next page's first.
        const auto next = std::next(page);
        const Entry* const end =
            next == pages().end() ? endOfChanges : std::lower_bound(change, endOfChanges, *next->begin(), comesBefore);
        if (change == end) {
            changed.push_back(*page);
        } else {
            addPages(changed, changedEntries(*page, change, end));
        }
        change = end;
    }
    addPages(changed, changedEntries({}, change, endOfChanges));
    QVLJournalPages result;
    result.m_pages = std::make_shared<const Pages>(std::move(changed));
    return result;
}

QVLJSONDictionary QVLJournalPages::dictionary() const {
    std::vector<Entry> entries;
    for (const QVLJSONDictionary& page : pages()) {
        entries.insert(entries.end(), page.begin(), page.end());
    }
    return QVLJSONDictionary(std::move(entries));
}

bool QVLJournalPages::isWritable() const {
    return std::none_of(pages().begin(), pages().end(),
                        [](const QVLJSONDictionary& page) { return page.compactText().empty(); });
}

std::size_t QVLJournalPages::compactTextSize() const {
    std::size_t size = 2;
    for (const QVLJSONDictionary& page : pages()) {
        size += page.compactText().size();
    }
    return size;
}

void QVLJournalPages::appendCompactText(std::string& text) const {
    text += '{';
    for (const QVLJSONDictionary& page : pages()) {
        const std::string& pageText = page.compactText();
        text += &page == &pages().front() ? "" : ",";
        text.append(pageText, 1, pageText.size() - 2);
    }
    text += '}';
}
