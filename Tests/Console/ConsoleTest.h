#pragma once

#include "EngineTest.h"
#include "QVLDebugDesktop.h"
#include "QVLDebugInputsViewController.h"
#include "QVLDebugJournalViewController.h"
#include "QVLDebugOutputsViewController.h"
#include "QVLDebugScriptsViewController.h"
#include "QVLDebugTableCellView.h"
#include "QVLDebugWindow.h"
#include "QVLDebugWindowController.h"
#include "QVLInputsManager.h"

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <map>

/// A host's inputs manager with fixed times.
class FixedInputsManager final : public QVLInputsManager {
public:
    int updateCount = 0;
    double mainThreadTime = 0.0123;
    std::map<std::string, double> times;
    /// How often it was asked for a time.
    mutable int askedCount = 0;

    void updateInputsNow() override { ++updateCount; }
    [[nodiscard]] double mainThreadGenerationTime() const override { return mainThreadTime; }
    [[nodiscard]] double totalGenerationTime() const override { return 0.5; }
    [[nodiscard]] double generationTimeForInput(const std::string& key) const override {
        ++askedCount;
        const auto found = times.find(key);
        return found == times.end() ? 0 : found->second;
    }
};

/// An engine and its console, on screen (that of the offscreen platform), driven with mouse and keyboard. Every model is
/// under the eyes of Qt's tester of models.
class ConsoleTest : public EngineTest {
protected:
    ConsoleTest();
    ~ConsoleTest() override;

    void openConsole();
    void closeConsole();
    [[nodiscard]] QVLDebugWindow& window() const { return static_cast<QVLDebugWindow&>(*controller->window()); }
    /// Clicks the section's item in the toolbar.
    void show(const char* title);
    template <class Section>
    [[nodiscard]] Section& section() const {
        for (const auto& candidate : window().sections()) {
            if (auto* const found = dynamic_cast<Section*>(candidate.get())) {
                return *found;
            }
        }
        throw std::logic_error("no such section");
    }

    /// The visible row of that key.
    template <class Cell, class Section>
    [[nodiscard]] Cell& cell(const Section& shown, const std::string& key) const {
        const QVLDebugTableView& table = *shown.tableView();
        for (int row = 0; row < shown.dataSource().numberOfRowsInTableView(); ++row) {
            auto* const found = dynamic_cast<Cell*>(table.viewAtRow(row));
            if (found && found->objectValue()->key() == key) {
                return *found;
            }
        }
        throw std::logic_error("no row of the key " + key);
    }
    [[nodiscard]] QVLDebugValueView& input(const std::string& key) const {
        return *cell<QVLDebugTableCellView>(section<QVLDebugInputsViewController>(), key).valueView();
    }
    [[nodiscard]] QVLDebugValueView& output(const std::string& key) const {
        return *cell<QVLDebugTableCellView>(section<QVLDebugOutputsViewController>(), key).valueView();
    }

    static void click(QWidget* widget) { QTest::mouseClick(widget, Qt::LeftButton); }
    /// Clicks a checkbox where its box is.
    static void tick(QAbstractButton* box) { QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2)); }
    /// Opens the editor by a click and types over what it holds.
    static void type(QVLDebugValueView& view, const char* text);
    /// Types and presses Return.
    static void edit(QVLDebugValueView& view, const char* text);
    /// The texts of a list of rows.
    [[nodiscard]] static std::vector<std::string> keysOf(const QVLDebugRows& rows);
    /// One turn of the event loop, in which no event loop of Qt's runs: that of a host of another toolkit.
    static void turn();
    /// How many widgets there are.
    [[nodiscard]] static qsizetype widgetCount() { return QApplication::allWidgets().size(); }

    std::shared_ptr<FixedInputsManager> inputsManager = std::make_shared<FixedInputsManager>();
    std::shared_ptr<QVLDebugWindowController> controller;
    int beepCount = 0;
    std::vector<std::string> openedFiles;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> modelTesters;
};
