#pragma once

#include "QVLJSONDictionary.h"
#include "QVLObject.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class QVLPropertyCollection;

/// Told which keys of a collection changed.
class QVL_EXPORT QVLPropertyCollectionDelegate {
public:
    virtual ~QVLPropertyCollectionDelegate();

    /// The merged values under these keys changed, appeared or went away. The keys are in no defined order. Main
    /// thread.
    virtual void collection(QVLPropertyCollection& collection, const std::vector<std::string>& objectsDidChange) = 0;
};

/// Named values in three layers, with change detection.
///
/// An explicit override (`collectionOverrides`) stands above an override from the user defaults, which stands above the
/// base value (`collection`). The collection compares the merged view with what it last reported and tells its delegate
/// exactly the keys that differ.
///
/// Changed on the main thread. The readers may be called from any thread: each sees one whole state of the layers.
/// Nothing here fails; a value that is not valid JSON is kept as it is, and whoever writes it reports it.
class QVL_EXPORT QVLPropertyCollection : public QVLObject {
public:
    [[nodiscard]] static std::shared_ptr<QVLPropertyCollection> init();
    ~QVLPropertyCollection() override;

    /// The base layer.
    [[nodiscard]] QVLJSONDictionary collection() const;
    /// Replaces the base layer (empty for nothing), then reports what changed.
    virtual void setCollection(const QVLJSONDictionary& collection);

    /// The explicit overrides.
    [[nodiscard]] QVLJSONDictionary collectionOverrides() const;
    /// Replaces the explicit overrides (empty for nothing), then reports what changed.
    void setCollectionOverrides(const QVLJSONDictionary& overrides);

    /// While true the collection shows no keys and no values; the layers are kept.
    [[nodiscard]] bool pretendIsEmpty() const;
    /// A change is reported; setting the current value does nothing.
    void setPretendIsEmpty(bool pretendIsEmpty);

    /// Prefix of the user-defaults keys that override this collection; empty for none. Setting it reports nothing and
    /// takes effect at the next merge.
    [[nodiscard]] std::string overrideDefaultsPrefix() const;
    void setOverrideDefaultsPrefix(const std::string& prefix);

    /// Held weakly.
    [[nodiscard]] std::shared_ptr<QVLPropertyCollectionDelegate> delegate() const;
    void setDelegate(const std::weak_ptr<QVLPropertyCollectionDelegate>& delegate);

    /// The keys of all layers, each once. Empty while `pretendIsEmpty`.
    [[nodiscard]] std::vector<std::string> collectionKeys() const;
    /// The value of the topmost layer that has the key, or nothing.
    [[nodiscard]] QVLJSONValue mergedValueForKey(std::string_view key) const;
    /// Every key with its merged value. Empty while `pretendIsEmpty`.
    [[nodiscard]] QVLJSONDictionary collectionWithOverrides() const;

    /// The overrides found in the user defaults under the prefix, without the prefix. No value without a prefix or when
    /// none was found; then the next call looks again. Once found they stay for the collection's life, and finding them
    /// writes one info line.
    [[nodiscard]] std::optional<QVLJSONDictionary> defaultOverrides() const;

    /// Compares the merged view with the last report and tells the delegate the keys that differ, if any. Main thread
    /// (asserted; the work goes on elsewhere too).
    void processChangedCollectionItems();

    /// The test of change detection: whether a current value is the same as a previous one. Either may be nothing; a
    /// missing current value is never the same as anything.
    [[nodiscard]] virtual bool considerItem(const QVLJSONValue& item, const QVLJSONValue& sameAsItem) const;

    [[nodiscard]] std::string className() const override { return "QVLPropertyCollection"; }

protected:
    QVLPropertyCollection();

    /// What a look would report now: copies of the changed values in the order of their keys, nothing for one that went
    /// away.
    [[nodiscard]] std::vector<QVLJSONDictionary::Entry> changesSinceReport() const;
    /// Looks at one key alone, for who knows that no other can have changed.
    void processChangedItemForKey(const QVLJSONString& key);
    /// Called before the delegate with what is about to be reported.
    virtual void willReport(const std::vector<QVLJSONDictionary::Entry>& changes);

private:
    struct Layers;
    struct State;

    [[nodiscard]] std::shared_ptr<const Layers> layers() const;
    void report(const std::vector<QVLJSONDictionary::Entry>& changes);

    std::unique_ptr<State> m_state;
    std::weak_ptr<QVLPropertyCollectionDelegate> m_delegate;
};
