#include "Interface/FrenchTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QString>
#include <QTranslator>

#include <algorithm>
#include <array>
#include <string_view>

namespace stillwick {

namespace {

struct Text {
    std::string_view context;
    std::string_view source;
    const char16_t* french;
};

/// Where the toolkit's translation is wrong, clumsy or vague.
constexpr std::array texts{
    Text{"QPlatformTheme", "Discard", u"Ne pas enregistrer"},
    Text{"QPlatformTheme", "Restore Defaults", u"Rétablir"},
    Text{"QMessageBox", "Show Details...", u"Afficher les détails…"},
    Text{"QMessageBox", "Hide Details...", u"Masquer les détails"},
    Text{"QFileDialog", "Look in:", u"Dossier :"},
    Text{"QFileDialog", "Files of type:", u"Type :"},
    Text{"QFileDialog", "File &name:", u"&Nom :"},
    Text{"QFileDialog", "My Computer", u"Ordinateur"},
    Text{"QFileDialog", "Go back", u"Dossier précédent"},
    Text{"QFileDialog", "Go forward", u"Dossier suivant"},
    Text{"QFileDialog", "Go to the parent directory", u"Dossier parent"},
    Text{"QFileDialog", "Create a New Folder", u"Créer un dossier"},
    Text{"QFileDialog", "Change to list view mode", u"Afficher en liste"},
    Text{"QFileDialog", "Change to detail view mode", u"Afficher les détails"},
    Text{"QFileDialog", "Find Directory", u"Choisir un dossier"},
    Text{"QFileDialog", "%1 already exists.\nDo you want to replace it?",
         u"« %1 » existe déjà.\nVoulez-vous le remplacer ?"},
    Text{"QFileDialog", "Are you sure you want to delete '%1'?",
         u"Voulez-vous vraiment supprimer « %1 » ?"},
    Text{"QFileDialog", "'%1' is write protected.\nDo you want to delete it anyway?",
         u"« %1 » est protégé en écriture.\nVoulez-vous quand même le supprimer ?"},
    Text{"QFileDialog", "%1\nFile not found.\nPlease verify the correct file name was given.",
         u"« %1 » est introuvable.\nVérifiez le nom du fichier."},
    Text{"QFileDialog",
         "%1\nDirectory not found.\nPlease verify the correct directory name was given.",
         u"Le dossier « %1 » est introuvable.\nVérifiez son nom."},
    Text{"QFileSystemModel", "My Computer", u"Ordinateur"},
    Text{"QFileSystemModel", "Date Modified", u"Modifié le"},
    Text{"QAbstractFileIconProvider", "Folder", u"Dossier"},
    Text{"QAbstractFileIconProvider", "Drive", u"Disque"},
    Text{"QAbstractFileIconProvider", "Unknown", u"Inconnu"},
    Text{"QColorDialog", "Hu&e:", u"&Teinte :"},
    Text{"QColorDialog", "&Sat:", u"&Saturation :"},
    Text{"QColorDialog", "&Val:", u"&Luminosité :"},
    Text{"QColorDialog", "A&lpha channel:", u"&Opacité :"},
    Text{"QColorDialog", "&Pick Screen Color", u"&Prendre à l'écran"},
    Text{"QShortcut", "Left", u"←"},
    Text{"QShortcut", "Right", u"→"},
    Text{"QShortcut", "Up", u"↑"},
    Text{"QShortcut", "Down", u"↓"},
    Text{"QShortcut", "Escape", u"Échap"},
    Text{"QShortcut", "Backspace", u"Retour arrière"},
};

class BetterTexts final : public QTranslator {
public:
    using QTranslator::QTranslator;

    QString translate(const char* context, const char* source, const char* /*disambiguation*/,
                      int /*count*/) const override {
        const auto found = std::ranges::find_if(texts, [&](const Text& text) {
            return text.source == source && text.context == context;
        });
        return found == texts.end() ? QString() : QString::fromUtf16(found->french);
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace

void installFrenchTexts(QCoreApplication& application) {
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    auto* toolkit = new QTranslator(&application);
    if (toolkit->load(QStringLiteral("qtbase_fr"),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(toolkit);
    QCoreApplication::installTranslator(new BetterTexts(&application)); // the later goes first
}

} // namespace stillwick
