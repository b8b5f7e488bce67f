#pragma once

#include "core/document/richtext/richtext.h"
#include "core/printing/paper.h"
#include "core/printing/printplan.h"

#include <QSizeF>
#include <QtGlobal>
#include <optional>

namespace lomir {

// The label as the editor shows it after its serial placeholder was resized for a
// full-page print.
struct ResizedLabel
{
    RichText text;
    std::optional<qint64> sizeTag; // the size popup's selected item, if any
    QSizeF labelSize;              // the label text view's frame, in points
    double magnification = 1.0;    // the editor's zoom
};

// What the print routine reads from the label editor and asks of it. The editor of a
// document window answers; tests answer with a stand-in.
class PrintEditor
{
public:
    virtual ~PrintEditor() = default;

    // The editor's fields, popups, label size and text as they are now; the paper, the
    // margins and the full-page flag are left for the print routine to fill in.
    virtual PrintRequest printRequest() const = 0;
    // Resizes the text's serial placeholder run to that many units (at least 1) through
    // the editor's own placeholder replacement, as a serial change: the editor reacts as
    // it does to any, resizing a label that follows its text. Returns the label as it
    // then is.
    virtual ResizedLabel resizeSerialPlaceholder(qint64 units) = 0;
    // Puts the text back as it was before the resize, straight into storage (the editor
    // does not handle it as a change), with an empty undo history.
    virtual void restoreText(const RichText& text) = 0;
    // The label is too large for the paper: the cell size alert.
    virtual void showCellSizeAlert() = 0;
};

// The print routine up to the print dialog, for paper and margins in points: reads the
// editor, makes the plan, and for a full-page print gives it the quantity of one full
// page, resizing the editor's placeholder run for the print when the page's numbers need
// another number of digits than the quantity field's (and restoring the editor's text
// right after, which leaves its undo history empty and any label resize in place). A
// label larger than the printable area gets the cell size alert and no plan.
std::optional<PrintPlan> preparePrint(PrintEditor& editor, const PaperSettings& paper,
                                      bool fullPage);

} // namespace lomir
