#pragma once

#include "QVLDurability.h"
#include "QVLJSONValue.h"
#include "QVLObject.h"

#include <memory>
#include <string>
#include <string_view>

/// Reads and writes whole JSON documents as files: compact UTF-8 with an object or array at the top level.
///
/// Forgiving on purpose: no operation throws or returns an error. Every failure is one line at error level, and a file
/// that cannot serve as a JSON object is deleted, so that the next write starts clean. Parent directories are not made.
/// Any thread; two threads never write one path at once.
class QVL_EXPORT QVLJSONStore final : public QVLObject {
public:
    /// The process's store, made on first use. Any thread.
    [[nodiscard]] static const std::shared_ptr<QVLJSONStore>& sharedStore();

    /// The document, an object or an array. Nothing when the path is missing (not logged), a directory stands there,
    /// the file cannot be read or does not parse.
    [[nodiscard]] QVLJSONValue loadJSONFromFileAtPath(const std::string& path) const;

    /// The document when it is an object. Otherwise nothing, and whatever stands at the path, a directory included, is
    /// deleted.
    [[nodiscard]] QVLJSONValue loadJSONObjectFromFileAtPath(const std::string& path) const;

    /// Replaces the file with the value, atomically: a reader sees the old document or the new one. A directory at the
    /// path is deleted first. A value that is not valid JSON, or a failed write, is logged and leaves the file as it
    /// was.
    void saveJSONObject(const QVLJSONValue& object, const std::string& toPath,
                        QVLDurability durability = QVLDurability::Durable) const;
    /// The same for a document that is compact JSON text already.
    void saveJSONText(std::string_view text, const std::string& toPath,
                      QVLDurability durability = QVLDurability::Durable) const;

    /// Removes what stands at the path, a directory with all its content; nothing there is no failure. The removal is
    /// announced at error level.
    void deleteItemAtPathIfExists(const std::string& path) const;

    [[nodiscard]] std::string className() const override { return "QVLJSONStore"; }
};
