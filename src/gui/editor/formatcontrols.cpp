#include "gui/editor/formatcontrols.h"

#include "core/document/richtext/richtextdocument.h"
#include "gui/editor/labeltextview.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleValidator>
#include <QFontDatabase>
#include <QFontDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QToolBar>
#include <functional>

namespace lomir {

// The font family box. Listing every family of the system takes a while on a desktop
// with many fonts, so the list is filled the first time it is opened; until then it
// holds only the family at the caret.
class FontFamilyBox final : public QComboBox
{
public:
    explicit FontFamilyBox(QWidget* parent) : QComboBox(parent)
    {
        setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        setMinimumContentsLength(12);
    }

    void setCurrentFamily(const QString& family)
    {
        int index = findText(family);
        if (index < 0) {
            addItem(family);
            index = count() - 1;
        }
        setCurrentIndex(index);
    }

    void showPopup() override
    {
        fillFamilies();
        QComboBox::showPopup();
    }

    void fillFamilies()
    {
        if (m_filled)
            return;
        m_filled = true;
        const QString current = currentText();
        clear();
        addItems(QFontDatabase::families());
        setCurrentFamily(current);
    }

private:
    bool m_filled = false;
};

namespace {

// A small icon drawn in the palette's text colour, for desktops without an icon theme.
QIcon drawnIcon(const std::function<void(QPainter&)>& draw)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QApplication::palette().color(QPalette::WindowText));
    draw(painter);
    return QIcon(pixmap);
}

QIcon letterIcon(const QString& themeName, const QString& letter,
                 const std::function<void(QFont&)>& style)
{
    if (QIcon::hasThemeIcon(themeName))
        return QIcon::fromTheme(themeName);
    return drawnIcon([&](QPainter& painter) {
        QFont font(QStringLiteral("Liberation Serif"));
        font.setPixelSize(24);
        style(font);
        painter.setFont(font);
        painter.drawText(QRect(0, 0, 32, 32), Qt::AlignCenter, letter);
    });
}

QIcon alignmentIcon(const QString& themeName, Qt::Alignment alignment)
{
    if (QIcon::hasThemeIcon(themeName))
        return QIcon::fromTheme(themeName);
    return drawnIcon([&](QPainter& painter) {
        painter.setPen(QPen(painter.pen().color(), 2.5));
        for (int line = 0; line < 5; ++line) {
            const int length = (alignment & Qt::AlignJustify) || line % 2 == 0 ? 24 : 16;
            int left = 4;
            if (alignment & Qt::AlignHCenter)
                left = 16 - length / 2;
            else if (alignment & Qt::AlignRight)
                left = 28 - length;
            const int y = 6 + line * 5;
            painter.drawLine(left, y, left + length, y);
        }
    });
}

QIcon colorIcon(const QColor& color)
{
    return drawnIcon([&](QPainter& painter) {
        QFont font(QStringLiteral("Liberation Sans"));
        font.setPixelSize(20);
        font.setBold(true);
        painter.setFont(font);
        painter.drawText(QRect(0, 0, 32, 24), Qt::AlignCenter, QStringLiteral("A"));
        painter.fillRect(QRect(4, 25, 24, 5), color);
    });
}

QAction* checkableAction(const QIcon& icon, const QString& text, const QKeySequence& shortcut,
                         QObject* parent)
{
    auto* action = new QAction(icon, text, parent);
    action->setCheckable(true);
    action->setShortcut(shortcut);
    action->setToolTip(shortcut.isEmpty() ? text
                                          : QStringLiteral("%1 (%2)").arg(
                                                text, shortcut.toString(QKeySequence::NativeText)));
    return action;
}

// What a format shows of its font and colour: the label's default font (defaultFont())
// where it has none of its own, as the run is measured and printed.
QString familyOf(const QTextCharFormat& format)
{
    const QStringList families = format.fontFamilies().toStringList();
    return families.isEmpty() ? defaultFont().family : families.first();
}

double pointSizeOf(const QTextCharFormat& format)
{
    return format.hasProperty(QTextFormat::FontPointSize) ? format.fontPointSize()
                                                          : defaultFont().pointSize;
}

QColor colorOf(const QTextCharFormat& format)
{
    return format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color()
                                                            : QColor(Qt::black);
}

QString sizeText(double pointSize)
{
    return QString::number(pointSize, 'g', 6);
}

} // namespace

FormatControls::FormatControls(LabelTextView* textView, const QStringList& sizes, QWidget* parent)
    : QObject(parent), m_textView(textView), m_parent(parent),
      m_toolBar(new QToolBar(tr("Format"), parent)), m_familyBox(new FontFamilyBox(m_toolBar)),
      m_sizeBox(new QComboBox(m_toolBar))
{
    m_toolBar->setObjectName(QStringLiteral("formatToolBar"));
    m_toolBar->setIconSize(QSize(16, 16));
    setUpFontBoxes(sizes);
    makeStyleActions();
    m_fontDialog = new QAction(QIcon::fromTheme(QStringLiteral("preferences-desktop-font")),
                               tr("Show Fonts..."), this);
    m_fontDialog->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    m_fontDialog->setToolTip(
        tr("Choose a font (%1)").arg(m_fontDialog->shortcut().toString(QKeySequence::NativeText)));
    connect(m_fontDialog, &QAction::triggered, this, &FormatControls::chooseFont);

    makeAlignmentActions();
    fillToolBar();

    connect(m_textView, &LabelTextView::typingAttributesDidChange, this,
            &FormatControls::showCurrentFormat);
    connect(m_textView, &LabelTextView::selectionDidChange, this,
            &FormatControls::showCurrentFormat);
    connect(m_textView, &LabelTextView::textDidChange, this, &FormatControls::showCurrentFormat);
    showCurrentFormat();
}

void FormatControls::setUpFontBoxes(const QStringList& sizes)
{
    m_familyBox->setObjectName(QStringLiteral("fontFamilyBox"));
    m_familyBox->setToolTip(tr("Font family"));
    connect(m_familyBox, &QComboBox::textActivated, this, &FormatControls::applyFamily);

    m_sizeBox->setObjectName(QStringLiteral("fontSizeBox"));
    m_sizeBox->setToolTip(tr("Font size in points"));
    m_sizeBox->setEditable(true);
    m_sizeBox->setInsertPolicy(QComboBox::NoInsert);
    m_sizeBox->addItems(sizes);
    m_sizeBox->setValidator(new QDoubleValidator(0.5, 9999.0, 2, m_sizeBox));
    m_sizeBox->setMinimumContentsLength(4);
    connect(m_sizeBox, &QComboBox::textActivated, this, &FormatControls::applySize);
}

// Bold, italic, underline and strikethrough toggle their attribute over the selection;
// the text color opens the color dialog.
void FormatControls::makeStyleActions()
{
    m_bold = checkableAction(letterIcon(QStringLiteral("format-text-bold"), QStringLiteral("B"),
                                        [](QFont& font) { font.setBold(true); }),
                             tr("Bold"), QKeySequence::Bold, this);
    m_italic = checkableAction(letterIcon(QStringLiteral("format-text-italic"), QStringLiteral("I"),
                                          [](QFont& font) { font.setItalic(true); }),
                               tr("Italic"), QKeySequence::Italic, this);
    m_underline =
        checkableAction(letterIcon(QStringLiteral("format-text-underline"), QStringLiteral("U"),
                                   [](QFont& font) { font.setUnderline(true); }),
                        tr("Underline"), QKeySequence::Underline, this);
    m_strikethrough =
        checkableAction(letterIcon(QStringLiteral("format-text-strikethrough"), QStringLiteral("S"),
                                   [](QFont& font) { font.setStrikeOut(true); }),
                        tr("Strikethrough"), QKeySequence(), this);
    connect(m_bold, &QAction::triggered, this, [this](bool on) {
        QTextCharFormat format;
        format.setFontWeight(on ? QFont::Bold : QFont::Normal);
        m_textView->mergeCharFormat(format);
    });
    connect(m_italic, &QAction::triggered, this, [this](bool on) {
        QTextCharFormat format;
        format.setFontItalic(on);
        m_textView->mergeCharFormat(format);
    });
    connect(m_underline, &QAction::triggered, this, [this](bool on) {
        QTextCharFormat format;
        format.setFontUnderline(on);
        m_textView->mergeCharFormat(format);
    });
    connect(m_strikethrough, &QAction::triggered, this, [this](bool on) {
        QTextCharFormat format;
        format.setFontStrikeOut(on);
        m_textView->mergeCharFormat(format);
    });

    m_color = new QAction(colorIcon(Qt::black), tr("Text Color..."), this);
    m_color->setToolTip(tr("Text color"));
    connect(m_color, &QAction::triggered, this, &FormatControls::chooseColor);
}

void FormatControls::makeAlignmentActions()
{
    m_alignment = new QActionGroup(this);
    m_alignLeft =
        checkableAction(alignmentIcon(QStringLiteral("format-justify-left"), Qt::AlignLeft),
                        tr("Align Left"), QKeySequence(), m_alignment);
    m_alignCenter =
        checkableAction(alignmentIcon(QStringLiteral("format-justify-center"), Qt::AlignHCenter),
                        tr("Center"), QKeySequence(), m_alignment);
    m_justify =
        checkableAction(alignmentIcon(QStringLiteral("format-justify-fill"), Qt::AlignJustify),
                        tr("Justify"), QKeySequence(), m_alignment);
    m_alignRight =
        checkableAction(alignmentIcon(QStringLiteral("format-justify-right"), Qt::AlignRight),
                        tr("Align Right"), QKeySequence(), m_alignment);
    const std::pair<QAction*, Qt::Alignment> alignments[] = {
        {m_alignLeft, Qt::AlignLeft | Qt::AlignAbsolute},
        {m_alignCenter, Qt::AlignHCenter},
        {m_justify, Qt::AlignJustify},
        {m_alignRight, Qt::AlignRight | Qt::AlignAbsolute}};
    for (const auto& [action, alignment] : alignments) {
        connect(action, &QAction::triggered, this,
                [this, alignment = alignment] { m_textView->setAlignment(alignment); });
    }
}

void FormatControls::fillToolBar()
{
    m_toolBar->addWidget(m_familyBox);
    m_toolBar->addWidget(m_sizeBox);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_bold);
    m_toolBar->addAction(m_italic);
    m_toolBar->addAction(m_underline);
    m_toolBar->addAction(m_strikethrough);
    m_toolBar->addAction(m_color);
    m_toolBar->addSeparator();
    m_toolBar->addActions(m_alignment->actions());
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_fontDialog);
}

FormatControls::~FormatControls()
{
    delete m_toolBar.data();
}

QMenu* FormatControls::createMenu(QWidget* parent) const
{
    auto* menu = new QMenu(tr("F&ormat"), parent);
    QMenu* font = menu->addMenu(tr("&Font"));
    font->addAction(m_fontDialog);
    font->addSeparator();
    font->addAction(m_bold);
    font->addAction(m_italic);
    font->addAction(m_underline);
    font->addAction(m_strikethrough);
    font->addSeparator();
    font->addAction(m_color);
    QMenu* text = menu->addMenu(tr("&Text"));
    text->addActions(m_alignment->actions());
    return menu;
}

QAction* FormatControls::alignmentAction(Qt::Alignment alignment) const
{
    if (alignment & Qt::AlignHCenter)
        return m_alignCenter;
    if (alignment & Qt::AlignJustify)
        return m_justify;
    if (alignment & Qt::AlignRight)
        return m_alignRight;
    return m_alignLeft;
}

QComboBox* FormatControls::familyBox() const
{
    return m_familyBox;
}

void FormatControls::showCurrentFormat()
{
    const QTextCharFormat format = m_textView->currentCharFormat();
    const QStringList families = format.fontFamilies().toStringList();
    m_familyBox->setCurrentFamily(families.isEmpty() ? defaultFont().family : families.first());
    const double size = format.hasProperty(QTextFormat::FontPointSize) ? format.fontPointSize()
                                                                       : defaultFont().pointSize;
    m_sizeBox->setEditText(sizeText(size));
    m_bold->setChecked(format.fontWeight() >= QFont::DemiBold);
    m_italic->setChecked(format.fontItalic());
    m_underline->setChecked(format.fontUnderline());
    m_strikethrough->setChecked(format.fontStrikeOut());
    m_color->setIcon(colorIcon(colorOf(format)));
    alignmentAction(m_textView->currentAlignment())->setChecked(true);
}

void FormatControls::applyFamily(const QString& family)
{
    QTextCharFormat format;
    format.setFontFamilies(QStringList{family});
    m_textView->mergeCharFormat(format);
}

void FormatControls::applySize(const QString& text)
{
    bool ok = false;
    const double size = QLocale::c().toDouble(text, &ok);
    if (!ok || size <= 0.0)
        return;
    QTextCharFormat format;
    format.setFontPointSize(size);
    m_textView->mergeCharFormat(format);
}

void FormatControls::chooseColor()
{
    const QColor color = QColorDialog::getColor(colorOf(m_textView->currentCharFormat()), m_parent,
                                                tr("Text Color"));
    if (!color.isValid())
        return;
    QTextCharFormat format;
    format.setForeground(color);
    m_textView->mergeCharFormat(format);
}

void FormatControls::chooseFont()
{
    const QTextCharFormat current = m_textView->currentCharFormat();
    QFont initial = current.font();
    initial.setFamily(familyOf(current));
    initial.setPointSizeF(pointSizeOf(current));
    bool accepted = false;
    const QFont font = QFontDialog::getFont(&accepted, initial, m_parent, tr("Font"));
    if (!accepted)
        return;
    QTextCharFormat format;
    format.setFontFamilies(QStringList{font.family()});
    format.setFontPointSize(font.pointSizeF());
    format.setFontWeight(font.bold() ? QFont::Bold : QFont::Normal);
    format.setFontItalic(font.italic());
    format.setFontUnderline(font.underline());
    format.setFontStrikeOut(font.strikeOut());
    m_textView->mergeCharFormat(format);
}

} // namespace lomir
