// The edge controls and the export panel: state in, texts and enablement out.
#include "SampleState.h"

#include "Interface/ColorWell.h"
#include "Interface/DisclosureGroup.h"
#include "Interface/LabelledSlider.h"
#include "Interface/Labels.h"
#include "Interface/Switch.h"
#include "Stillwick/EdgeControlsView.h"
#include "Stillwick/ExportPanelView.h"

#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>

namespace stillwick::testing {

namespace {

template <typename View>
class PanelTest : public ::testing::Test {
protected:
    PanelTest() { view.show(); }

    template <typename Widget>
    [[nodiscard]] Widget& find(const QString& text) const {
        for (auto* each : view.template findChildren<Widget*>())
            if (each->text().contains(text))
                return *each;
        throw std::runtime_error(text.toStdString());
    }
    [[nodiscard]] bool shows(const QString& text) const {
        for (const auto* each : view.template findChildren<QLabel*>())
            if (each->isVisible() && each->text() == text)
                return true;
        return false;
    }

    std::unique_ptr<AppState> state = stateWith(std::make_shared<ColumnSegmenter>(std::vector{90}));
    View view{*state};
};

class EdgeControlsViewTest : public PanelTest<EdgeControlsView> {
protected:
    EdgeControlsViewTest() { view.findChild<DisclosureGroup*>()->setExpanded(true); }

    [[nodiscard]] LabelledSlider& slider(int index) const {
        return *view.findChildren<LabelledSlider*>().at(index);
    }
};

TEST_F(EdgeControlsViewTest, SlidersWriteIntoTheStateAndFollowIt) {
    emit slider(0).valueChosen(2.5);
    emit slider(1).valueChosen(1.25);
    EXPECT_EQ(state->edgeOptions().shrink, 2.5);
    EXPECT_EQ(state->edgeOptions().feather, 1.25);
    EdgeOptions options;
    options.shrink = 7;
    state->setEdgeOptions(options);
    EXPECT_NEAR(slider(0).value(), 7, 1e-6);
    EXPECT_NEAR(slider(1).value(), 0, 1e-6);
}

TEST_F(EdgeControlsViewTest, TheOutlineShowsItsControlsWithTheirLastValues) {
    auto& outline = *view.findChild<Switch*>();
    auto& well = *view.findChild<ColorWell*>();
    EXPECT_FALSE(slider(2).isVisible());
    EXPECT_FALSE(well.isVisible());
    outline.click();
    EXPECT_TRUE(state->edgeOptions().outline);
    EXPECT_TRUE(slider(2).isVisible());
    EXPECT_TRUE(well.isVisible());
    EXPECT_EQ(slider(2).value(), 6);
    emit slider(2).valueChosen(14);
    emit well.colorChosen(QColor(10, 20, 30, 40));
    outline.click();
    EXPECT_FALSE(slider(2).isVisible());
    outline.click();
    EXPECT_EQ(slider(2).value(), 14);
    EXPECT_EQ(state->edgeOptions().outlineColor, QColor(10, 20, 30, 40));
}

TEST_F(EdgeControlsViewTest, TheGroupBeginsFolded) {
    DisclosureGroup fresh(u"scribble.variable", QStringLiteral("Contours pour ce test"));
    EXPECT_FALSE(fresh.isExpanded());
}

class ExportPanelViewTest : public PanelTest<ExportPanelView> {
protected:
    [[nodiscard]] QPushButton& merged() const {
        return find<QPushButton>(QStringLiteral("Fusionné (⌘E)"));
    }
    [[nodiscard]] QPushButton& perSubject() const {
        return find<QPushButton>(QStringLiteral("Par sujet (⇧⌘E)"));
    }
    void prepare() {
        load(*state);
        captureAt(*state, 1000);
        finish(*state);
    }
    void chooseFolder() {
        state->setOutputFolder(
            QUrl::fromLocalFile(m_folder.filePath(QStringLiteral("Sortie d'été"))));
    }

    QTemporaryDir m_folder;
};

TEST_F(ExportPanelViewTest, WithCapturesButNoFolderTheHintShowsAndTheButtonsAreOff) {
    prepare();
    EXPECT_TRUE(shows(QStringLiteral("Aucun dossier")));
    EXPECT_TRUE(shows(QStringLiteral("Choisissez un dossier de sortie pour exporter.")));
    EXPECT_FALSE(merged().isEnabled());
    EXPECT_FALSE(perSubject().isEnabled());
    chooseFolder();
    EXPECT_TRUE(shows(QStringLiteral("Sortie d'été")));
    EXPECT_FALSE(shows(QStringLiteral("Choisissez un dossier de sortie pour exporter.")));
    EXPECT_TRUE(merged().isEnabled());
    EXPECT_TRUE(perSubject().isEnabled());
    state->deleteFrame(state->allFrames().front().id());
    EXPECT_FALSE(merged().isEnabled()) << "no captures";
}

TEST_F(ExportPanelViewTest, DuringAnExportTheButtonsAreOffAndTheProgressShows) {
    prepare();
    chooseFolder();
    merged().click();
    EXPECT_TRUE(state->progress().isRunning);
    EXPECT_FALSE(merged().isEnabled());
    EXPECT_FALSE(perSubject().isEnabled());
    EXPECT_TRUE(view.findChild<QProgressBar*>()->isVisible());
    EXPECT_TRUE(shows(QStringLiteral("0 / 1")));
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    EXPECT_TRUE(merged().isEnabled());
    EXPECT_FALSE(view.findChild<QProgressBar*>()->isVisible());
}

TEST_F(ExportPanelViewTest, TheEndIsAnnouncedEachTime) {
    prepare();
    chooseFolder();
    for (int round = 0; round < 2; ++round) {
        merged().click();
        QMessageBox* notice = nullptr;
        ASSERT_TRUE(runUntil([&] {
            for (auto* each : view.findChildren<QMessageBox*>())
                if (each->isVisible())
                    notice = each;
            return notice != nullptr;
        }));
        EXPECT_EQ(notice->windowTitle(), QStringLiteral("Export terminé"));
        EXPECT_EQ(notice->informativeText(), QStringLiteral("1 image(s) exportée(s)."));
        EXPECT_FALSE(state->exportFinishedFolder().isEmpty());
        for (auto* button : notice->buttons())
            if (button->text() == QStringLiteral("OK"))
                button->click();
        runFor(std::chrono::milliseconds(20));
        EXPECT_FALSE(state->exportFinishedFolder().isEmpty()) << "OK only dismisses";
    }
}

TEST_F(ExportPanelViewTest, FailuresAreCountedAndListed) {
    state = stateWith(blindSegmenter());
    ExportPanelView panel(*state);
    panel.show();
    load(*state);
    captureAt(*state, 1000);
    captureAt(*state, 500);
    captureAt(*state, 250);
    chooseFolder();
    state->runExport(ExportMode::merged);
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    QStringList texts;
    for (const auto* each : panel.findChildren<QLabel*>())
        if (each->isVisibleTo(&panel))
            texts.append(each->text());
    EXPECT_TRUE(texts.contains(QStringLiteral("3 échec(s)")));
    EXPECT_TRUE(
        texts.contains(QStringLiteral("00:00.500 — Aucun sujet détecté dans cette image.")));
    EXPECT_EQ(panel.exportSummary(), QStringLiteral("0 image(s) exportée(s), 3 échec(s)."));
}

TEST_F(ExportPanelViewTest, TheStyleIsNamed) {
    EXPECT_TRUE(shows(QStringLiteral("Filtre : Aucun")));
    state->setSelectedFilter(FilterStyle::comic);
    EXPECT_TRUE(shows(QStringLiteral("Filtre : BD")));
}

TEST_F(ExportPanelViewTest, CancellingTheFolderChooserKeepsTheFolder) {
    chooseFolder();
    const QUrl before = state->outputFolder();
    view.chooseFolder();
    auto* const dialog = view.findChild<QFileDialog*>();
    ASSERT_NE(dialog, nullptr);
    dialog->reject();
    EXPECT_EQ(state->outputFolder(), before);
}

} // namespace

} // namespace stillwick::testing
