#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QKeySequence>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

namespace {

TEST(FrenchTexts, DialogButtonsAreFrenchInAnyLocale) {
    const QDialogButtonBox box(QDialogButtonBox::Save | QDialogButtonBox::Discard |
                               QDialogButtonBox::Cancel);
    EXPECT_EQ(box.button(QDialogButtonBox::Save)->text(), u"Enregistrer");
    EXPECT_EQ(box.button(QDialogButtonBox::Discard)->text(), u"Ne pas enregistrer");
    EXPECT_EQ(box.button(QDialogButtonBox::Cancel)->text(), u"Annuler");
}

TEST(FrenchTexts, TheFileDialogIsFrenchToTheLastLabel) {
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    EXPECT_EQ(dialog.labelText(QFileDialog::LookIn), u"Dossier :");
    EXPECT_EQ(dialog.labelText(QFileDialog::FileName), u"&Nom :");
    EXPECT_EQ(dialog.labelText(QFileDialog::FileType), u"Type :");
    EXPECT_EQ(dialog.labelText(QFileDialog::Reject), u"Annuler");
}

TEST(FrenchTexts, TheFileDialogCallsFoldersAndDisksByTheirFrenchNames) {
    const QFileIconProvider provider;
    EXPECT_EQ(provider.type(QFileInfo(QStringLiteral(STILLWICK_SOURCE_DIR))), u"Dossier");
    EXPECT_EQ(provider.type(QFileInfo(QDir::rootPath())), u"Disque");
}

TEST(FrenchTexts, AQuestionAboutAFileThatExistsIsACorrectSentence) {
    EXPECT_EQ(
        QApplication::translate("QFileDialog", "%1 already exists.\nDo you want to replace it?"),
        u"« %1 » existe déjà.\nVoulez-vous le remplacer ?");
}

TEST(FrenchTexts, ShortcutsAreWrittenAsOnAFrenchKeyboard) {
    EXPECT_EQ(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S).toString(QKeySequence::NativeText),
              u"Ctrl+Maj+S");
    EXPECT_EQ(QKeySequence(Qt::SHIFT | Qt::Key_Left).toString(QKeySequence::NativeText), u"Maj+←");
}

TEST(FrenchTexts, AFieldsMenuIsFrench) {
    QLineEdit field;
    QMenu* menu = field.createStandardContextMenu();
    QStringList texts;
    for (const QAction* action : menu->actions())
        texts.push_back(action->text().section(u'\t', 0, 0).remove(u'&'));
    delete menu;
    EXPECT_TRUE(texts.contains(QStringLiteral("Couper"))) << texts.join(u',').toStdString();
    EXPECT_TRUE(texts.contains(QStringLiteral("Tout sélectionner")));
}

} // namespace
