#include "ValueText.h"

#include <Quorvel/QVLJSONSerialization.h>

#include <algorithm>
#include <vector>

namespace host {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
constexpr std::size_t kWidestName = 32;
constexpr std::size_t kLongestText = 2000;

bool isContainer(const QVLJSONValue& value) {
    return value.isArray() || value.isDictionary();
}

bool isEmptyContainer(const QVLJSONValue& value) {
    return value.arrayOrEmpty().isEmpty() && value.dictionaryOrEmpty().isEmpty();
}

/// Whether the value has parts of its own that want lines of their own.
bool isNested(const QVLJSONValue& value) {
    if (value.isDictionary()) {
        return !isEmptyContainer(value);
    }
    const QVLJSONArray elements = value.arrayOrEmpty();
    return std::any_of(elements.begin(), elements.end(), isContainer);
}

Style styleOf(const QVLJSONValue& value) {
    return value.isString() ? Style::Text : value.isNumber() ? Style::Number : Style::Quiet;
}

/// The writer escapes slashes for the sake of web pages, which makes paths and addresses hard to read.
std::string withPlainSlashes(const std::string& text) {
    std::string plain;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool isEscape = text[index] == '\\' && index + 1 < text.size();
        if (isEscape && text[index + 1] != '/') {
            plain += text[index];
        }
        index += isEscape ? 1 : 0;
        plain += text[index];
    }
    return plain;
}

std::string textOf(const QVLJSONValue& value) {
    if (value.stringView().size() <= kLongestText) {
        return withPlainSlashes(QVLJSONSerialization::dataWithFragment(value).text);
    }
    std::string_view start = value.stringView().substr(0, kLongestText);
    while (!QVLJSONSerialization::dataWithFragment(start)) {
        start.remove_suffix(1);
    }
    return textOf(start) + " and so on, " + std::to_string(value.stringView().size()) + " bytes";
}

struct Word {
    std::string text;
    Style style = Style::Plain;
};

/// Each item is one or more words that stay together.
using Item = std::vector<Word>;

void putItems(Page& page, const std::vector<Item>& items) {
    const std::size_t start = page.column();
    for (const Item& item : items) {
        std::size_t width = 0;
        for (const Word& word : item) {
            width += Page::widthOf(word.text);
        }
        if (!page.hasRoomFor(width) && page.column() > start) {
            page.endLine().padTo(start);
        }
        for (const Word& word : item) {
            page.put(word.text, word.style);
        }
    }
}

void putList(Page& page, const QVLJSONArray& elements) {
    std::vector<Item> items;
    for (const QVLJSONValue& element : elements) {
        const bool isLast = items.size() + 1 == elements.count();
        items.push_back({{items.empty() ? "[" : ""}, {textOf(element), styleOf(element)}, {isLast ? "]" : ", "}});
    }
    putItems(page, items);
}

/// The elements under their numbers, so that they can be shown like members.
QVLJSONDictionary numbered(const QVLJSONArray& elements) {
    const std::size_t digits = std::to_string(elements.count()).size();
    std::vector<QVLJSONDictionary::Entry> entries;
    for (const QVLJSONValue& element : elements) {
        const std::string number = std::to_string(entries.size());
        entries.push_back({"[" + std::string(digits - number.size(), ' ') + number + "]", element});
    }
    return QVLJSONDictionary(std::move(entries));
}

std::size_t widestName(const QVLJSONDictionary& members) {
    std::size_t widest = 0;
    for (const QVLJSONDictionary::Entry& member : members) {
        widest = std::max(widest, Page::widthOf(member.key.text()));
    }
    return std::min(widest, kWidestName);
}

} // namespace

void putMembers(Page& page, const QVLJSONDictionary& members, std::size_t indent) {
    const std::size_t valueColumn = indent + widestName(members) + kGap;
    for (const auto& [name, value] : members) {
        if (!isNested(value)) {
            page.padTo(indent).put(name.text(), Style::Label).put(" ").padTo(valueColumn);
            putValue(page, value);
            page.endLine();
        }
    }
    for (const auto& [name, value] : members) {
        if (isNested(value)) {
            page.padTo(indent).put(name.text(), Style::Label).endLine();
            putMembers(page, value.isArray() ? numbered(value.arrayOrEmpty()) : value.dictionaryOrEmpty(),
                       indent + kIndent);
        }
    }
}

void putValue(Page& page, const QVLJSONValue& value) {
    if (value.isArray() && !isEmptyContainer(value) && !isNested(value)) {
        putList(page, value.arrayOrEmpty());
    } else {
        page.put(textOf(value), styleOf(value));
    }
}

void putMembersInLine(Page& page, const QVLJSONDictionary& members) {
    std::vector<Item> items;
    for (const auto& [name, value] : members) {
        const bool isLast = items.size() + 1 == members.count();
        items.push_back({{name.text() + " ", Style::Label}, {textOf(value), styleOf(value)}, {isLast ? "" : ", "}});
    }
    putItems(page, items);
}

} // namespace host
