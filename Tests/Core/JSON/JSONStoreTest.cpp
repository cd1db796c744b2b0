#include "QVLJSONStore.h"

#include "RecordingLogger.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class JSONStore : public testing::Test {
protected:
    JSONStore() { m_platform.install(); }

    void write(const std::string& text) const { std::ofstream(m_path, std::ios::binary) << text; }
    /// The file's content, or "missing", or "directory".
    [[nodiscard]] std::string content() const {
        if (!std::filesystem::is_regular_file(m_path)) {
            return std::filesystem::exists(m_path) ? "directory" : "missing";
        }
        std::ifstream file(m_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void makeFullDirectory() const {
        std::filesystem::create_directories(m_path + "/inside");
        std::ofstream(m_path + "/inside/file") << "x";
    }
    [[nodiscard]] std::string line(const std::string& before, const std::string& after) const {
        return "error QVLJSONStore: " + before + m_path + after;
    }
    [[nodiscard]] std::string deletingLine() const { return line("Deleting item at path: '", "'"); }

    TestPlatform m_platform;
    TemporaryDirectory m_directory;
    const std::string m_path = m_directory.path("Store.json");
    const std::shared_ptr<QVLJSONStore> m_store = QVLJSONStore::sharedStore();
    RecordedLog m_log;
};

TEST_F(JSONStore, LoadsWhatItSaved) {
    const QVLJSONDictionary object{{"a", true}, {"b", QVLJSONArray{1, 2.5, nullptr, "\xC3\xA9/"}}};
    m_store->saveJSONObject(object, m_path);
    EXPECT_EQ(content(), "{\"a\":true,\"b\":[1,2.5,null,\"\xC3\xA9\\/\"]}");
    const QVLJSONValue loaded = m_store->loadJSONObjectFromFileAtPath(m_path);
    EXPECT_EQ(loaded, QVLJSONValue(object));
    EXPECT_TRUE(loaded.dictionaryOrEmpty().valueForKey("a").isBoolean());
    EXPECT_THAT(m_log->take(), IsEmpty());
}

TEST_F(JSONStore, AMissingFileIsNothingAndNoFailure) {
    EXPECT_TRUE(m_store->loadJSONObjectFromFileAtPath(m_path).isNothing());
    m_store->deleteItemAtPathIfExists(m_path);
    EXPECT_THAT(m_log->take(), IsEmpty());
}

TEST_F(JSONStore, AFileThatIsNoObjectIsKeptByOneReaderAndDeletedByTheOther) {
    const std::string notJSON = "', error: The top level is neither an object nor an array. (at byte 0).";
    struct Row {
        std::string text;
        std::string errorEnd;
    };
    const std::vector<Row> rows = {
        {"[1,2]", ""},
        {"5", notJSON},
        {"\"text\"", notJSON},
        {"", "', error: The document is empty. (at byte 0)."},
        {"{\"a\":1", "', error: Missing a comma or '}' after an object member. (at byte 6)."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        write(row.text);
        const bool isDocument = row.errorEnd.empty();
        EXPECT_EQ(m_store->loadJSONFromFileAtPath(m_path).isArray(), isDocument);
        EXPECT_EQ(content(), row.text);
        EXPECT_TRUE(m_store->loadJSONObjectFromFileAtPath(m_path).isNothing());
        EXPECT_EQ(content(), "missing");
        const std::string failure = line("Could not read JSON data at path: '", row.errorEnd);
        if (isDocument) {
            EXPECT_THAT(m_log->take(), ElementsAre(deletingLine()));
        } else {
            EXPECT_THAT(m_log->take(), ElementsAre(failure, failure, deletingLine()));
        }
    }
}

TEST_F(JSONStore, ADirectoryIsReportedAndRemovedWithItsContentByTheObjectReader) {
    const std::string failure = line("Found directory instead of a JSON file at path: '", "'.");
    makeFullDirectory();
    EXPECT_TRUE(m_store->loadJSONFromFileAtPath(m_path).isNothing());
    EXPECT_EQ(content(), "directory");
    EXPECT_TRUE(m_store->loadJSONObjectFromFileAtPath(m_path).isNothing());
    EXPECT_EQ(content(), "missing");
    EXPECT_THAT(m_log->take(), ElementsAre(failure, failure, deletingLine()));
}

TEST_F(JSONStore, AnUnreadableFileIsReportedAndDeletedByTheObjectReader) {
    m_platform.fileManager->readFault = FaultyFileManager::always("input/output error");
    write("{}");
    EXPECT_TRUE(m_store->loadJSONObjectFromFileAtPath(m_path).isNothing());
    EXPECT_EQ(content(), "missing");
    EXPECT_THAT(m_log->take(), ElementsAre(line("Could not read file at path: '", "'."), deletingLine()));
}

TEST_F(JSONStore, AnInvalidValueIsNotWritten) {
    write("{\"old\":1}");
    m_store->saveJSONObject(QVLJSONDictionary{{"a", std::numeric_limits<double>::infinity()}}, m_path);
    m_store->saveJSONObject("text", m_path);
    m_store->saveJSONObject({}, m_path);
    EXPECT_EQ(content(), "{\"old\":1}");
    const RecordingLogger::Line line = m_log->lines().front();
    EXPECT_EQ(line.object, m_store.get());
    EXPECT_EQ(line.function, "QVLJSONStore::saveJSONObject");
    EXPECT_THAT(line.file, testing::EndsWith("QVLJSONStore.cpp"));
    EXPECT_THAT(m_log->take(), ElementsAre("error QVLJSONStore: Invalid JSON object: {\"a\":inf}",
                                           "error QVLJSONStore: Invalid JSON object: text",
                                           "error QVLJSONStore: Invalid JSON object: (null)"));
}

TEST_F(JSONStore, SavingReplacesADirectory) {
    makeFullDirectory();
    m_store->saveJSONObject(QVLJSONArray{1}, m_path);
    EXPECT_EQ(content(), "[1]");
    EXPECT_THAT(m_log->take(),
                ElementsAre(line("Found directory instead of a JSON file at path: '", "'."), deletingLine()));
}

TEST_F(JSONStore, AFailedWriteKeepsTheOldFile) {
    write("{\"old\":1}");
    m_platform.fileManager->writeFault = FaultyFileManager::always("no space left");
    m_store->saveJSONObject(QVLJSONDictionary{{"new", 1}}, m_path);
    EXPECT_EQ(content(), "{\"old\":1}");
    EXPECT_THAT(m_log->take(), ElementsAre(line("Could not save file: '", "', error: no space left")));

    m_platform.fileManager->writeFault = nullptr;
    m_store->saveJSONObject(QVLJSONDictionary{}, m_directory.path("absent/Store.json"));
    EXPECT_FALSE(std::filesystem::exists(m_directory.path("absent")));
    EXPECT_EQ(m_log->take().size(), 1U);
}

TEST_F(JSONStore, AFailedRemovalNamesTheErrorInThePlaceOfThePath) {
    write("[]");
    m_platform.fileManager->removeFault = FaultyFileManager::always("busy");
    m_store->deleteItemAtPathIfExists(m_path);
    EXPECT_EQ(content(), "[]");
    EXPECT_THAT(m_log->take(),
                ElementsAre(deletingLine(), "error QVLJSONStore: Could not delete item at path: 'busy'"));
}

} // namespace
