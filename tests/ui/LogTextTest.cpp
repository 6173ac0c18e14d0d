#include "ui/window/LogText.h"

#include <gtest/gtest.h>

#include <QQmlComponent>
#include <QQmlEngine>
#include <QTextCursor>
#include <QTextDocument>
#include <memory>

#include "tests/platform/OffscreenApplication.h"

namespace zeb {
namespace {

class LogTextTest : public testing::Test {
protected:
    static void SetUpTestSuite() { test::needApplication(); }

    LogTextTest() {
        QQmlComponent component(&engine);
        component.setData("import QtQuick; TextEdit { textFormat: TextEdit.PlainText }", {});
        edit.reset(component.create());
        log.setDocument(edit->property("textDocument").value<QQuickTextDocument*>());
    }
    QTextDocument& document() const { return *log.document()->textDocument(); }

    QQmlEngine engine;
    std::unique_ptr<QObject> edit;
    LogText log;
};

TEST_F(LogTextTest, SelectionStaysOnItsWords) {
    // Texts set one after the other, with the first "keep" selected.
    const QStringList texts[] = {
        {"one\nkeep\n", "one\nkeep\nthree", "one\nkeep\nthree\nfour"},  // grows
        {"one\ntwo\nkeep\nfour", "two\nkeep\nfour\nfive",
         "keep\nfour\nfive\nsix\nseven"},                        // grows and loses lines
        {"a\na\nkeep\na", "a\nkeep\na\nb", "keep\na\nb\na\na"},  // equal lines
    };
    for (const QStringList& steps : texts) {
        log.setText(steps.front());
        QTextCursor selection = document().find("keep");
        ASSERT_FALSE(selection.isNull());
        for (const QString& step : steps) {
            log.setText(step);
            EXPECT_EQ(document().toPlainText(), step);
            EXPECT_EQ(selection.selectedText(), "keep") << step.toStdString();
        }
        log.setText("");
        EXPECT_EQ(document().toPlainText(), "");
    }
}

TEST_F(LogTextTest, ReportsAppendedAndRemovedLines) {
    std::vector<int> lengths;
    std::vector<double> heights;
    QObject::connect(&log, &LogText::appended, [&](int length) { lengths.push_back(length); });
    QObject::connect(&log, &LogText::shortened, [&](double height) { heights.push_back(height); });
    int changes = 0;
    QObject::connect(&log, &LogText::textChanged, [&] { ++changes; });
    for (const char* text : {"1\n2\n3", "1\n2\n3\n4", "1\n2\n3\n4"})
        log.setText(text);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(lengths, (std::vector{0, 5}));
    EXPECT_TRUE(heights.empty());
    log.setText("3\n4\n5");
    log.setText("4\n5\n6");
    EXPECT_EQ(lengths, (std::vector{0, 5, 3, 3}));
    ASSERT_EQ(heights.size(), 2U);
    EXPECT_GT(heights[1], 0);
    EXPECT_DOUBLE_EQ(heights[0], 2 * heights[1]) << "two lines, then one";

    log.setText("other");
    EXPECT_EQ(document().toPlainText(), "other");
    EXPECT_FALSE(document().isUndoAvailable());
}

}  // namespace
}  // namespace zeb
