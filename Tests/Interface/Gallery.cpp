// All symbols, or all widgets at work, as pictures to look at:
//     interface-gallery symbols|widgets|focus|popover|menu|alert|empty|icon light|dark FILE.png
// QT_SCALE_FACTOR sets the density.
#include "Interface/Alert.h"
#include "Interface/Buttons.h"
#include "Interface/Checkerboard.h"
#include "Interface/ColorPicker.h"
#include "Interface/ColorWell.h"
#include "Interface/ContinuousSlider.h"
#include "Interface/DisclosureGroup.h"
#include "Interface/EmptyPanel.h"
#include "Interface/LabelledSlider.h"
#include "Interface/Labels.h"
#include "Interface/Look.h"
#include "Interface/PlayerControls.h"
#include "Interface/Popover.h"
#include "Interface/ProgressIndicator.h"
#include "Interface/SectionedListView.h"
#include "Interface/SegmentedPicker.h"
#include "Interface/SplitView.h"
#include "Interface/Switch.h"
#include "Interface/Symbol.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScrollArea>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include <cstdio>

namespace {

using namespace stillwick;

QString text(const char16_t* literal) {
    return QString::fromUtf16(literal);
}

/// Every symbol at every size, in its three states.
QImage symbolSheet() {
    const QStringList names = symbolNames();
    constexpr int rowHeight = 56;
    constexpr int nameWidth = 210;
    constexpr int columnWidth = 440;
    const int rows = int(names.size() + 2) / 3;
    const qreal ratio = qApp->devicePixelRatio();
    QImage sheet((QSizeF(3 * columnWidth, rows * rowHeight) * ratio).toSize(),
                 QImage::Format_ARGB32_Premultiplied);
    sheet.setDevicePixelRatio(ratio);
    const QPalette palette = QApplication::palette();
    sheet.fill(palette.color(QPalette::Window));
    QPainter painter(&sheet);
    for (int i = 0; i < int(names.size()); ++i) {
        const int x = i / rows * columnWidth + 12;
        const int y = i % rows * rowHeight;
        painter.setPen(palette.color(QPalette::WindowText));
        painter.drawText(QRect(x, y, nameWidth, rowHeight), Qt::AlignVCenter, names.at(i));
        int left = x + nameWidth;
        for (const int side : {16, 20, 44}) {
            symbolIcon(names.at(i)).paint(&painter, left, y + (rowHeight - side) / 2, side, side);
            left += side + 12;
        }
        const QRect selected(left, y + 16, 24, 24);
        painter.fillRect(selected, palette.color(QPalette::Highlight));
        symbolIcon(names.at(i))
            .paint(&painter, selected.adjusted(2, 2, -2, -2), Qt::AlignCenter, QIcon::Selected);
        symbolIcon(names.at(i))
            .paint(&painter, left + 32, y + 18, 20, 20, Qt::AlignCenter, QIcon::Disabled);
        symbolIcon(names.at(i), ThemeColor::accent).paint(&painter, left + 60, y + 18, 20, 20);
    }
    return sheet;
}

QImage iconSheet() {
    QImage sheet(720, 288, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(QApplication::palette().color(QPalette::Window));
    QPainter painter(&sheet);
    int left = 16;
    for (const int side : {256, 128, 64, 48, 32, 24, 16}) {
        painter.drawPixmap(left, 16, applicationIcon().pixmap(QSize(side, side), 1.0));
        left += side + 16;
    }
    return sheet;
}

/// A subject on a ground, or cut out of it.
QImage drawnPicture(int hue, bool isCutOut) {
    QImage image(256, 144, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isCutOut) {
        QLinearGradient sky(0, 0, 0, 144);
        sky.setColorAt(0, QColor::fromHsv(hue, 90, 235));
        sky.setColorAt(1, QColor::fromHsv((hue + 30) % 360, 120, 130));
        painter.fillRect(image.rect(), sky);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromHsv((hue + 170) % 360, 190, 235));
    painter.drawEllipse(QPointF(128, 52), 26, 26);
    painter.drawRoundedRect(QRectF(88, 84, 80, 70), 30, 30);
    return image;
}

ListRow demoRow(int number) {
    ListRow row;
    ThumbnailBox full;
    full.content = number == 3 ? ThumbnailBox::Content::progress : ThumbnailBox::Content::picture;
    full.picture = drawnPicture(number * 37 % 360, false);
    ThumbnailBox subject;
    subject.isOnCheckerboard = true;
    subject.padding = 2;
    subject.content = ThumbnailBox::Content::picture;
    if (number == 2)
        subject.content = ThumbnailBox::Content::symbol;
    if (number == 3)
        subject.content = ThumbnailBox::Content::progress;
    subject.symbol = QStringLiteral("person.slash");
    subject.picture = drawnPicture(number * 37 % 360, true);
    row.boxes = {full, subject};
    row.symbolBetween = QStringLiteral("arrow.right");
    row.text = QStringLiteral("00:%1.%2")
                   .arg(10 + number)
                   .arg(number * 111 % 1000, 3, 10, QLatin1Char('0'));
    row.badge = number == 1 ? QStringLiteral("2") : QString();
    return row;
}

QWidget* demoHeader(const QString& name, bool isActive, int count) {
    auto* header = new QWidget;
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    auto* active =
        new SymbolButton(isActive ? u"largecircle.fill.circle" : u"circle",
                         text(u"Groupe actif (cible des captures)"), SymbolButton::Border::none);
    if (isActive)
        active->setSymbol(u"largecircle.fill.circle", ThemeColor::accent);
    auto* field = new QLineEdit(name);
    field->setFrame(false);
    field->setPlaceholderText(text(u"Nom du groupe"));
    setTextStyle(field, TextStyle::subheadline);
    auto* trash =
        new SymbolButton(u"trash", text(u"Supprimer le groupe"), SymbolButton::Border::none);
    trash->setSymbol(u"trash", ThemeColor::destructive);
    layout->addWidget(active);
    layout->addWidget(field, 1);
    layout->addWidget(
        makeLabel(QString::number(count), TextStyle::caption, ThemeColor::secondaryText));
    layout->addWidget(new SymbolButton(u"text.alignleft", text(u"Description du groupe"),
                                       SymbolButton::Border::none));
    layout->addWidget(trash);
    return header;
}

class Film final : public QWidget {
protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::black);
        const QImage picture = drawnPicture(200, false);
        const QSize size = picture.size().scaled(this->size(), Qt::KeepAspectRatio);
        QRect room(QPoint(0, 0), size);
        room.moveCenter(rect().center());
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(room, picture);
    }
};

QWidget* filmColumn(bool isEmpty) {
    auto* column = new QWidget;
    column->setMinimumSize(460, 360);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (isEmpty) {
        auto* panel =
            new EmptyPanel(u"film.stack", text(u"Aucune vidéo"),
                           text(u"Glissez une vidéo ici, ou ouvrez-en une (.mp4, .mov)."));
        panel->setAction(new ProminentButton(u"folder", text(u"Ouvrir une vidéo"),
                                             ProminentButton::Size::large));
        layout->addWidget(panel, 1);
    } else {
        auto* film = new Film;
        auto* controls = new PlayerControls(film);
        controls->setDuration(83.5);
        controls->setPosition(31.25);
        controls->setVolume(0.7);
        controls->setProperty("presence", 1.0);
        layout->addWidget(film, 1);
    }
    auto* timeline = new QVBoxLayout;
    timeline->setContentsMargins(12, 8, 12, 12);
    auto* line = new QHBoxLayout;
    line->setSpacing(12);
    auto* now = new FixedDigitLabel;
    now->setText(text(u"00:31.250"));
    setTextStyle(now, TextStyle::caption);
    auto* end = new FixedDigitLabel;
    end->setText(text(u"01:23.500"));
    setTextStyle(end, TextStyle::caption);
    auto* slider = new ContinuousSlider;
    slider->setBounds(0, 83.5);
    slider->setRealValue(31.25);
    slider->setAccessibleName(text(u"Position"));
    line->addWidget(now);
    line->addWidget(slider, 1);
    line->addWidget(end);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    for (const QStringView symbol :
         {u"gobackward", u"backward.frame.fill", u"play.fill", u"forward.frame.fill", u"goforward"})
        buttons->addWidget(new SymbolButton(symbol, symbol.toString(), SymbolButton::Border::thin));
    buttons->addStretch();
    buttons->addWidget(new ProminentButton(u"camera.fill", text(u"Capturer")));
    timeline->addLayout(line);
    timeline->addLayout(buttons);
    layout->addLayout(timeline);
    return column;
}

/// The sections after that move.
QList<ListSection> moved(QList<ListSection> sections, const QUuid& id, const QList<int>& offsets,
                         int destination) {
    for (ListSection& section : sections) {
        if (section.id != id)
            continue;
        QList<QUuid> before;
        QList<QUuid> moving;
        QList<QUuid> behind;
        for (int i = 0; i < int(section.rows.size()); ++i) {
            QList<QUuid>& part = offsets.contains(i) ? moving : (i < destination ? before : behind);
            part.push_back(section.rows.at(i));
        }
        section.rows = before + moving + behind;
    }
    return sections;
}

QWidget* listColumn(bool isEmpty) {
    auto* column = new QWidget;
    column->setMinimumWidth(260);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* line = new QHBoxLayout;
    line->setContentsMargins(12, 8, 8, 8);
    line->addWidget(new SymbolLabel(u"photo.stack", text(u"Images capturées")), 1);
    line->addWidget(makeLabel(isEmpty ? text(u"0") : text(u"7"), TextStyle::callout));
    line->addWidget(new SymbolButton(u"folder.badge.plus", text(u"Nouveau groupe"),
                                     SymbolButton::Border::none));
    layout->addLayout(line);
    if (isEmpty) {
        layout->addWidget(
            new EmptyPanel(u"photo.on.rectangle", text(u"Aucune image"),
                           text(u"Naviguez dans la vidéo puis appuyez sur C pour capturer.")),
            1);
        return column;
    }
    QList<ListSection> sections{{QUuid::createUuid(), {}}, {QUuid::createUuid(), {}}};
    QHash<QUuid, int> numbers;
    for (int i = 0; i < 7; ++i) {
        const QUuid id = QUuid::createUuid();
        numbers.insert(id, i);
        sections[i < 5 ? 0 : 1].rows.push_back(id);
    }
    const QUuid first = sections.at(0).id;
    auto* list = new SectionedListView(
        [numbers](const QUuid& id) { return demoRow(numbers.value(id)); },
        [first](const QUuid& id) {
            return demoHeader(id == first ? text(u"Service") : text(u"Coup droit"), id == first,
                              id == first ? 5 : 2);
        });
    list->setAccessibleName(text(u"Images capturées"));
    list->setSections(sections);
    list->setSelectedRows({sections.at(0).rows.at(1), sections.at(0).rows.at(2)});
    QObject::connect(list, &SectionedListView::moveRequested, list,
                     [list](const QUuid& id, const QList<int>& offsets, int destination) {
                         list->setSections(moved(list->sections(), id, offsets, destination));
                         std::printf("moved %d to %d\n", offsets.first(), destination);
                         std::fflush(stdout);
                     });
    layout->addWidget(list, 1);
    return column;
}

QWidget* previewPane() {
    auto* pane = new QWidget;
    pane->setMinimumHeight(240);
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(14, 10, 14, 10);
    layout->addWidget(new SymbolLabel(u"wand.and.stars", text(u"Aperçu")));
    auto* board = new CheckerboardView(12);
    board->setMinimumHeight(160);
    layout->addWidget(board, 1);
    auto* tools = new QHBoxLayout;
    auto* picker = new SegmentedPicker(text(u"Outil"));
    picker->addSegment(u"cursorarrow", text(u"Sélection"));
    picker->addSegment(u"arrow.up.right", text(u"Flèche"));
    picker->addSegment(u"line.diagonal", text(u"Ligne"));
    picker->addSegment(u"circle", text(u"Cercle"));
    picker->setCurrentIndex(1);
    auto* well = new ColorWell(text(u"Couleur de l'annotation"));
    well->setColor(QColor(255, 60, 60, 160));
    well->setObjectName(QStringLiteral("well"));
    auto* width = new ContinuousSlider;
    width->setFixedWidth(70);
    width->setBounds(0.002, 0.02);
    width->setRealValue(0.006);
    auto* trash = new SymbolButton(u"trash", text(u"Supprimer"), SymbolButton::Border::none);
    trash->setEnabled(false);
    tools->addWidget(picker);
    tools->addWidget(well);
    tools->addWidget(width);
    tools->addStretch();
    tools->addWidget(trash);
    layout->addLayout(tools);
    layout->addWidget(
        makeLabel(text(u"Note de l'extrait"), TextStyle::caption, ThemeColor::secondaryText));
    auto* note = new QPlainTextEdit(text(u"Vue de face, le bras est tendu."));
    note->setFixedHeight(60);
    setTextStyle(note, TextStyle::callout);
    layout->addWidget(note);
    return pane;
}

QWidget* settingsPane() {
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(14, 10, 14, 14);
    auto* group = new DisclosureGroup(u"scribble.variable", text(u"Contours"));
    auto* controls = new QWidget;
    auto* column = new QVBoxLayout(controls);
    column->setContentsMargins(0, 6, 0, 0);
    column->setSpacing(10);
    auto* shrink = new LabelledSlider(text(u"Affiner les bords"), 0, 10);
    shrink->setValue(3);
    auto* outline = new Switch(text(u"Contour sticker"));
    outline->setChecked(true);
    column->addWidget(shrink);
    column->addWidget(outline);
    group->setContent(controls);
    group->setExpanded(true);
    layout->addWidget(group);
    auto* divider = new QFrame;
    divider->setFrameShape(QFrame::HLine);
    layout->addWidget(divider);
    layout->addWidget(new SymbolLabel(u"square.and.arrow.up", text(u"Export")));
    auto* folder = new QHBoxLayout;
    auto* path = new ElidedLabel;
    path->setText(text(u"Images du tournoi de printemps"));
    folder->addWidget(path, 1);
    folder->addWidget(makeLabelledButton(u"folder", text(u"Dossier…")));
    layout->addLayout(folder);
    auto* crop = new Switch(text(u"Recadrer sur le sujet"));
    layout->addWidget(crop);
    auto* buttons = new QHBoxLayout;
    auto* perSubject = makeLabelledButton(u"square.on.square", text(u"Par sujet"));
    perSubject->setEnabled(false);
    buttons->addWidget(perSubject);
    buttons->addWidget(makeLabelledButton(u"square.and.arrow.down", text(u"Fusionné")));
    layout->addLayout(buttons);
    auto* bar = new QProgressBar;
    bar->setRange(0, 7);
    bar->setValue(3);
    bar->setTextVisible(false);
    layout->addWidget(bar);
    layout->addWidget(new SymbolLabel(u"exclamationmark.triangle.fill", text(u"1 échec(s)"),
                                      TextStyle::body, ThemeColor::warning));
    layout->addStretch();
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setMinimumHeight(150);
    area->setWidget(content);
    return area;
}

QMainWindow* demoWindow(bool isEmpty) {
    auto* window = new QMainWindow;
    QMenu* file = window->menuBar()->addMenu(text(u"Fichier"));
    file->addAction(text(u"Nouveau projet"), QKeySequence(Qt::CTRL | Qt::Key_N), [] {});
    file->addAction(text(u"Ouvrir un projet…"), QKeySequence(Qt::CTRL | Qt::Key_O), [] {});
    file->addSeparator();
    file->addAction(text(u"Enregistrer"), QKeySequence(Qt::CTRL | Qt::Key_S), [] {});
    file->addAction(text(u"Enregistrer sous…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
                    [] {})
        ->setEnabled(false);
    file->addMenu(text(u"Déplacer vers"))->addAction(text(u"Sans nom"));
    window->menuBar()
        ->addMenu(text(u"Vidéo"))
        ->addAction(text(u"Reculer (intervalle)"), QKeySequence(Qt::SHIFT | Qt::Key_Left), [] {});
    auto* columns = new SplitView(Qt::Horizontal, QStringLiteral("columns"));
    auto* right = new SplitView(Qt::Vertical, QStringLiteral("right"));
    right->setMinimumWidth(320);
    right->addWidget(previewPane());
    right->addWidget(settingsPane());
    columns->addWidget(filmColumn(isEmpty));
    columns->addWidget(listColumn(isEmpty));
    columns->addWidget(right);
    window->setCentralWidget(columns);
    window->resize(1280, 800);
    window->show();
    columns->setProportions({55, 22, 23});
    right->setProportions({55, 45});
    return window;
}

void settle() {
    QTest::qWait(400);
}

QImage picture(const QString& kind) {
    if (kind == u"symbols")
        return symbolSheet();
    if (kind == u"icon")
        return iconSheet();
    QMainWindow* window = demoWindow(kind == u"empty");
    settle();
    QWidget* shown = window;
    if (kind == u"popover") {
        auto* well = window->findChild<ColorWell*>(QStringLiteral("well"));
        well->popover().open();
    } else if (kind == u"focus") {
        window->activateWindow();
        auto* list = window->findChild<SectionedListView*>();
        list->setFocus(Qt::TabFocusReason);
        QTest::keyClick(list, Qt::Key_Down);
    } else if (kind == u"menu") {
        auto* menu = window->menuBar()->actions().first()->menu();
        menu->popup(window->mapToGlobal(QPoint(8, 40)));
        menu->setActiveAction(menu->actions().at(1));
        shown = menu;
    } else if (kind == u"alert") {
        shown = openErrorAlert(window, text(u"Échec de l'ouverture : le fichier est introuvable."));
    }
    settle();
    return shown->grab().toImage();
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != (arguments.value(1) == u"live" ? 3 : 4)) {
        std::fputs(
            "interface-gallery symbols|widgets|focus|popover|menu|alert|empty|icon light|dark "
            "FILE.png\n",
            stderr);
        return 2;
    }
    installLook(application, arguments.at(2) == u"dark" ? ColorScheme::dark : ColorScheme::light);
    if (arguments.at(1) == u"live") {
        demoWindow(false);
        return QApplication::exec();
    }
    return picture(arguments.at(1)).save(arguments.at(3)) ? 0 : 1;
}
