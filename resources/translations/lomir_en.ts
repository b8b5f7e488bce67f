<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>CommandLine</name>
    <message>
        <source>Usage:
  lomir [FILE...]          open the label editor with these files, or a new label
  lomir convert IN OUT     convert a label between .lomir, .txt and .rtf
  lomir inspect FILE       print a label document as JSON
  lomir print FILE (-o OUT.pdf | --printer NAME) [OPTIONS]
                           print the label's copies, as the editor's Print command
                           does, without a display:
    -o OUT.pdf             write the pages to a PDF file
    --printer NAME         send the job to this print queue (see “lpstat -p”)
    --full-page            print exactly one full page of copies
    --quantity N           print N copies instead of the document's quantity
    --serial-start N       number the copies from N instead of the document's
                           first number
    --paper NAME|WxHUNIT   the paper: a name such as A4, Letter, A5 or Legal, or a
                           size with the unit mm, in or pt (100x150mm, 4x6in);
                           A4, or Letter where the locale uses Letter, by default
    --margins L,T,R,B      left, top, right and bottom margins in points
                           (default 36,36,36,36)
    A label larger than the paper less the margins is not printed (exit status 1).
  lomir --version          print the version
  lomir --help             print this help

Exit status: 0 when done, 1 when the command could not be carried out, 2 when it
was not understood.
</source>
        <translation>Usage:
  lomir [FILE...]          open the label editor with these files, or a new label
  lomir convert IN OUT     convert a label between .lomir, .txt and .rtf
  lomir inspect FILE       print a label document as JSON
  lomir print FILE (-o OUT.pdf | --printer NAME) [OPTIONS]
                           print the label's copies, as the editor's Print command
                           does, without a display:
    -o OUT.pdf             write the pages to a PDF file
    --printer NAME         send the job to this print queue (see “lpstat -p”)
    --full-page            print exactly one full page of copies
    --quantity N           print N copies instead of the document's quantity
    --serial-start N       number the copies from N instead of the document's
                           first number
    --paper NAME|WxHUNIT   the paper: a name such as A4, Letter, A5 or Legal, or a
                           size with the unit mm, in or pt (100x150mm, 4x6in);
                           A4, or Letter where the locale uses Letter, by default
    --margins L,T,R,B      left, top, right and bottom margins in points
                           (default 36,36,36,36)
    A label larger than the paper less the margins is not printed (exit status 1).
  lomir --version          print the version
  lomir --help             print this help

Exit status: 0 when done, 1 when the command could not be carried out, 2 when it
was not understood.
</translation>
    </message>
    <message>
        <source>Cannot tell the type of “%1”: name it .lomir, .txt or .rtf.</source>
        <translation>Cannot tell the type of “%1”: name it .lomir, .txt or .rtf.</translation>
    </message>
    <message>
        <source>“convert” takes an input and an output file; see “lomir --help”.
</source>
        <translation>“convert” takes an input and an output file; see “lomir --help”.
</translation>
    </message>
    <message>
        <source>“inspect” takes one file; see “lomir --help”.
</source>
        <translation>“inspect” takes one file; see “lomir --help”.
</translation>
    </message>
    <message>
        <source>Unknown command “%1”; see “lomir --help”.
</source>
        <translation>Unknown command “%1”; see “lomir --help”.
</translation>
    </message>
    <message>
        <source>%1 takes a whole number of at least %2, not “%3”.</source>
        <translation>%1 takes a whole number of at least %2, not “%3”.</translation>
    </message>
    <message>
        <source>Unknown paper “%1”: give a paper name such as A4 or Letter, or a size such as 100x150mm, 4x6in or 288x432pt.</source>
        <translation>Unknown paper “%1”: give a paper name such as A4 or Letter, or a size such as 100x150mm, 4x6in or 288x432pt.</translation>
    </message>
    <message>
        <source>The margins “%1” are not four numbers of points of at least 0, given as LEFT,TOP,RIGHT,BOTTOM.</source>
        <translation>The margins “%1” are not four numbers of points of at least 0, given as LEFT,TOP,RIGHT,BOTTOM.</translation>
    </message>
    <message>
        <source>%1 needs a value; see “lomir --help”.</source>
        <translation>%1 needs a value; see “lomir --help”.</translation>
    </message>
    <message>
        <source>Unknown option “%1” for “print”; see “lomir --help”.</source>
        <translation>Unknown option “%1” for “print”; see “lomir --help”.</translation>
    </message>
    <message>
        <source>“print” takes one label file, not “%1” as well; see “lomir --help”.</source>
        <translation>“print” takes one label file, not “%1” as well; see “lomir --help”.</translation>
    </message>
    <message>
        <source>“print” needs a label file to print; see “lomir --help”.</source>
        <translation>“print” needs a label file to print; see “lomir --help”.</translation>
    </message>
    <message>
        <source>“print” needs either -o OUT.pdf or --printer NAME, and not both; see “lomir --help”.</source>
        <translation>“print” needs either -o OUT.pdf or --printer NAME, and not both; see “lomir --help”.</translation>
    </message>
    <message>
        <source>The first serial number and the quantity together pass the largest number Lomir counts to (9223372036854775807).</source>
        <translation>The first serial number and the quantity together pass the largest number Lomir counts to (9223372036854775807).</translation>
    </message>
    <message>
        <source>Cannot write “%1”: %2.</source>
        <translation>Cannot write “%1”: %2.</translation>
    </message>
    <message>
        <source>The paper size cannot be used for a PDF.</source>
        <translation>The paper size cannot be used for a PDF.</translation>
    </message>
    <message>
        <source>There is no printer named “%1”.</source>
        <translation>There is no printer named “%1”.</translation>
    </message>
    <message>
        <source>The printer “%1” does not take this paper size.</source>
        <translation>The printer “%1” does not take this paper size.</translation>
    </message>
    <message>
        <source>The printer “%1” does not take the job.</source>
        <translation>The printer “%1” does not take the job.</translation>
    </message>
    <message>
        <source>The printer “%1” stopped taking pages.</source>
        <translation>The printer “%1” stopped taking pages.</translation>
    </message>
    <message>
        <source>Lomir ran out of memory: there is not enough memory to finish “%1”. Close other programs and try again.</source>
        <translation>Lomir ran out of memory: there is not enough memory to finish “%1”. Close other programs and try again.</translation>
    </message>
</context>
<context>
    <name>DocumentDialogs</name>
    <message>
        <source>Lomir Document (*.lomir)</source>
        <translation>Lomir Document (*.lomir)</translation>
    </message>
    <message>
        <source>Plain Text (*.txt)</source>
        <translation>Plain Text (*.txt)</translation>
    </message>
    <message>
        <source>Rich Text Format (*.rtf)</source>
        <translation>Rich Text Format (*.rtf)</translation>
    </message>
    <message>
        <source>Do you want to save the changes you made to “%1”?</source>
        <translation>Do you want to save the changes you made to “%1”?</translation>
    </message>
    <message>
        <source>Your changes are lost if you don’t save them.</source>
        <translation>Your changes are lost if you don’t save them.</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Save As</translation>
    </message>
    <message>
        <source>Labels (*.lomir *.txt *.text *.rtf)</source>
        <translation>Labels (*.lomir *.txt *.text *.rtf)</translation>
    </message>
    <message>
        <source>Plain Text (*.txt *.text)</source>
        <translation>Plain Text (*.txt *.text)</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>Do you want to revert “%1” to the version last saved?</source>
        <translation>Do you want to revert “%1” to the version last saved?</translation>
    </message>
    <message>
        <source>Your current changes are lost.</source>
        <translation>Your current changes are lost.</translation>
    </message>
    <message>
        <source>Revert</source>
        <translation>Revert</translation>
    </message>
</context>
<context>
    <name>DocumentFile</name>
    <message>
        <source>Cannot open “%1”: %2.</source>
        <translation>Cannot open “%1”: %2.</translation>
    </message>
    <message>
        <source>Cannot read “%1”: %2</source>
        <translation>Cannot read “%1”: %2</translation>
    </message>
    <message>
        <source>Cannot write “%1”: %2</source>
        <translation>Cannot write “%1”: %2</translation>
    </message>
    <message>
        <source>Cannot write “%1”: %2.</source>
        <translation>Cannot write “%1”: %2.</translation>
    </message>
    <message>
        <source>the disk is full</source>
        <translation>the disk is full</translation>
    </message>
    <message>
        <source>the disk quota is used up</source>
        <translation>the disk quota is used up</translation>
    </message>
    <message>
        <source>permission denied</source>
        <translation>permission denied</translation>
    </message>
    <message>
        <source>the disk is read-only</source>
        <translation>the disk is read-only</translation>
    </message>
    <message>
        <source>there is no such file</source>
        <translation>there is no such file</translation>
    </message>
    <message>
        <source>the folder “%1” does not exist</source>
        <translation>the folder “%1” does not exist</translation>
    </message>
    <message>
        <source>part of its path is not a folder</source>
        <translation>part of its path is not a folder</translation>
    </message>
    <message>
        <source>it is a folder, not a file</source>
        <translation>it is a folder, not a file</translation>
    </message>
    <message>
        <source>its path has too many symbolic links</source>
        <translation>its path has too many symbolic links</translation>
    </message>
    <message>
        <source>its name is too long</source>
        <translation>its name is too long</translation>
    </message>
    <message>
        <source>it is too large for the disk</source>
        <translation>it is too large for the disk</translation>
    </message>
    <message>
        <source>the disk could not be read or written</source>
        <translation>the disk could not be read or written</translation>
    </message>
    <message>
        <source>too many files are open</source>
        <translation>too many files are open</translation>
    </message>
    <message>
        <source>it is a pipe, not a file</source>
        <translation>it is a pipe, not a file</translation>
    </message>
    <message>
        <source>it is a socket, not a file</source>
        <translation>it is a socket, not a file</translation>
    </message>
    <message>
        <source>it is a device, not a file</source>
        <translation>it is a device, not a file</translation>
    </message>
    <message>
        <source>it is larger than %1, the largest file Lomir opens</source>
        <translation>it is larger than %1, the largest file Lomir opens</translation>
    </message>
    <message>
        <source>there is not enough memory to read it</source>
        <translation>there is not enough memory to read it</translation>
    </message>
</context>
<context>
    <name>DocumentFormats</name>
    <message>
        <source>Lomir cannot read or write documents of the type “%1”.</source>
        <translation>Lomir cannot read or write documents of the type “%1”.</translation>
    </message>
    <message>
        <source>The file is not UTF-8 text.</source>
        <translation>The file is not UTF-8 text.</translation>
    </message>
    <message>
        <source>The label’s text has %1 characters, more than the %2 a label can hold.</source>
        <translation>The label’s text has %1 characters, more than the %2 a label can hold.</translation>
    </message>
    <message>
        <source>The document would take more than %1, the largest file Lomir opens.</source>
        <translation>The document would take more than %1, the largest file Lomir opens.</translation>
    </message>
</context>
<context>
    <name>DocumentLimits</name>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
</context>
<context>
    <name>KeyedArchive</name>
    <message>
        <source>The archive is damaged: %1.</source>
        <translation>The archive is damaged: %1.</translation>
    </message>
    <message>
        <source>The archive holds an object of class “%1”, which Lomir cannot read.</source>
        <translation>The archive holds an object of class “%1”, which Lomir cannot read.</translation>
    </message>
</context>
<context>
    <name>MessageBoxAlertPresenter</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Do not show this message again</source>
        <translation>Do not show this message again</translation>
    </message>
</context>
<context>
    <name>Metric</name>
    <message>
        <source>Inches Shorthand</source>
        <translation>in</translation>
    </message>
    <message>
        <source>Millimeters Shorthand</source>
        <translation>mm</translation>
    </message>
</context>
<context>
    <name>PrintDialogs</name>
    <message>
        <source>Export as PDF</source>
        <translation>Export as PDF</translation>
    </message>
    <message>
        <source>PDF Document (*.pdf)</source>
        <translation>PDF Document (*.pdf)</translation>
    </message>
</context>
<context>
    <name>PrintRoutine</name>
    <message>
        <source>Cell Size Alert Message</source>
        <translation>The label is too large for the paper.</translation>
    </message>
    <message>
        <source>Cell Size Alert Informative</source>
        <translation>Make the label smaller, or print on larger paper or with smaller margins.</translation>
    </message>
</context>
<context>
    <name>RecoveryFolder</name>
    <message>
        <source>Cannot make the folder “%1”.</source>
        <translation>Cannot make the folder “%1”.</translation>
    </message>
    <message>
        <source>Cannot lock the folder “%1”.</source>
        <translation>Cannot lock the folder “%1”.</translation>
    </message>
</context>
<context>
    <name>RtfReader</name>
    <message>
        <source>The RTF document nests its groups more than %1 deep, which no word processor does; it is probably damaged.</source>
        <translation>The RTF document nests its groups more than %1 deep, which no word processor does; it is probably damaged.</translation>
    </message>
    <message>
        <source>The file is not in Rich Text Format: RTF files begin with “{\rtf”. Open it as plain text instead.</source>
        <translation>The file is not in Rich Text Format: RTF files begin with “{\rtf”. Open it as plain text instead.</translation>
    </message>
</context>
<context>
    <name>lomir::AppDelegate</name>
    <message>
        <source>No Recent Documents</source>
        <translation>No Recent Documents</translation>
    </message>
    <message>
        <source>Clear Menu</source>
        <translation>Clear Menu</translation>
    </message>
    <message>
        <source>About Lomir</source>
        <translation>About Lomir</translation>
    </message>
    <message>
        <source>&lt;p&gt;&lt;b&gt;Lomir %1&lt;/b&gt;&lt;/p&gt;&lt;p&gt;Designs and prints sheets of identical text labels.&lt;/p&gt;</source>
        <translation>&lt;p&gt;&lt;b&gt;Lomir %1&lt;/b&gt;&lt;/p&gt;&lt;p&gt;Designs and prints sheets of identical text labels.&lt;/p&gt;</translation>
    </message>
</context>
<context>
    <name>lomir::CascadingWindowController</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;File</translation>
    </message>
    <message>
        <source>&amp;New</source>
        <translation>&amp;New</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Open…</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>Open &amp;Recent</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Close</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Save</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>Save &amp;As…</translation>
    </message>
    <message>
        <source>Re&amp;vert to Saved</source>
        <translation>Re&amp;vert to Saved</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quit</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <source>&amp;About Lomir</source>
        <translation>&amp;About Lomir</translation>
    </message>
    <message>
        <source>(Recovered)</source>
        <translation>(Recovered)</translation>
    </message>
    <message>
        <source>Page Set&amp;up…</source>
        <translation>Page Set&amp;up…</translation>
    </message>
    <message>
        <source>Print Previe&amp;w</source>
        <translation>Print Previe&amp;w</translation>
    </message>
    <message>
        <source>&amp;Export as PDF…</source>
        <translation>&amp;Export as PDF…</translation>
    </message>
    <message>
        <source>&amp;Print…</source>
        <translation>&amp;Print…</translation>
    </message>
    <message>
        <source>Print &amp;Full Page…</source>
        <translation>Print &amp;Full Page…</translation>
    </message>
    <message>
        <source>Print Ca&amp;libration Page…</source>
        <translation>Print Ca&amp;libration Page…</translation>
    </message>
</context>
<context>
    <name>lomir::DocumentController</name>
    <message>
        <source>The document “%1” could not be opened.</source>
        <translation>The document “%1” could not be opened.</translation>
    </message>
    <message>
        <source>Lomir opens label documents (.lomir), plain text (.txt) and RTF (.rtf).</source>
        <translation>Lomir opens label documents (.lomir), plain text (.txt) and RTF (.rtf).</translation>
    </message>
    <message>
        <source>The document “%1” could not be saved.</source>
        <translation>The document “%1” could not be saved.</translation>
    </message>
    <message>
        <source>The document “%1” could not be reverted.</source>
        <translation>The document “%1” could not be reverted.</translation>
    </message>
    <message>
        <source>The document “%1” could not be saved automatically.</source>
        <translation>The document “%1” could not be saved automatically.</translation>
    </message>
    <message>
        <source>The changes to “%1” could not be kept for recovery.</source>
        <translation>The changes to “%1” could not be kept for recovery.</translation>
    </message>
    <message>
        <source>A document that Lomir kept when it last stopped cannot be restored.</source>
        <translation>A document that Lomir kept when it last stopped cannot be restored.</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Untitled</translation>
    </message>
    <message>
        <source>Untitled %1</source>
        <translation>Untitled %1</translation>
    </message>
</context>
<context>
    <name>lomir::FormatControls</name>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>Font family</source>
        <translation>Font family</translation>
    </message>
    <message>
        <source>Font size in points</source>
        <translation>Font size in points</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>Bold</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>Italic</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Underline</translation>
    </message>
    <message>
        <source>Strikethrough</source>
        <translation>Strikethrough</translation>
    </message>
    <message>
        <source>Text Color...</source>
        <translation>Text Color...</translation>
    </message>
    <message>
        <source>Text color</source>
        <translation>Text color</translation>
    </message>
    <message>
        <source>Show Fonts...</source>
        <translation>Show Fonts...</translation>
    </message>
    <message>
        <source>Choose a font (%1)</source>
        <translation>Choose a font (%1)</translation>
    </message>
    <message>
        <source>Align Left</source>
        <translation>Align Left</translation>
    </message>
    <message>
        <source>Center</source>
        <translation>Center</translation>
    </message>
    <message>
        <source>Justify</source>
        <translation>Justify</translation>
    </message>
    <message>
        <source>Align Right</source>
        <translation>Align Right</translation>
    </message>
    <message>
        <source>F&amp;ormat</source>
        <translation>F&amp;ormat</translation>
    </message>
    <message>
        <source>&amp;Font</source>
        <translation>&amp;Font</translation>
    </message>
    <message>
        <source>&amp;Text</source>
        <translation>&amp;Text</translation>
    </message>
    <message>
        <source>Text Color</source>
        <translation>Text Color</translation>
    </message>
    <message>
        <source>Font</source>
        <translation>Font</translation>
    </message>
</context>
<context>
    <name>lomir::MainViewController</name>
    <message>
        <source>Label size:</source>
        <translation>Label size:</translation>
    </message>
    <message>
        <source>Make the label as large as its text, or give it a size of your own</source>
        <translation>Make the label as large as its text, or give it a size of your own</translation>
    </message>
    <message>
        <source>Fit to Text</source>
        <translation>Fit to Text</translation>
    </message>
    <message>
        <source>Custom Size</source>
        <translation>Custom Size</translation>
    </message>
    <message>
        <source>Fit to Text in One Size</source>
        <translation>Fit to Text in One Size</translation>
    </message>
    <message>
        <source>Large Text (9 pt)</source>
        <translation>Large Text (9 pt)</translation>
    </message>
    <message>
        <source>Medium Text (7 pt)</source>
        <translation>Medium Text (7 pt)</translation>
    </message>
    <message>
        <source>Tiny Text (4 pt)</source>
        <translation>Tiny Text (4 pt)</translation>
    </message>
    <message>
        <source>Regular Text (8 pt)</source>
        <translation>Regular Text (8 pt)</translation>
    </message>
    <message>
        <source>Width of the label</source>
        <translation>Width of the label</translation>
    </message>
    <message>
        <source>x</source>
        <translation>x</translation>
    </message>
    <message>
        <source>Height of the label</source>
        <translation>Height of the label</translation>
    </message>
    <message>
        <source>The label&apos;s width and height</source>
        <translation>The label&apos;s width and height</translation>
    </message>
    <message>
        <source>The unit label sizes are shown and typed in</source>
        <translation>The unit label sizes are shown and typed in</translation>
    </message>
    <message>
        <source>Millimeters</source>
        <translation>Millimeters</translation>
    </message>
    <message>
        <source>Inches</source>
        <translation>Inches</translation>
    </message>
    <message>
        <source>Quantity:</source>
        <translation>Quantity:</translation>
    </message>
    <message>
        <source>How many labels to print</source>
        <translation>How many labels to print</translation>
    </message>
    <message>
        <source>First number:</source>
        <translation>First number:</translation>
    </message>
    <message>
        <source>The serial number of the first label; the others count up from it</source>
        <translation>The serial number of the first label; the others count up from it</translation>
    </message>
    <message>
        <source>Put a serial number at the caret; every label gets its own number</source>
        <translation>Put a serial number at the caret; every label gets its own number</translation>
    </message>
    <message>
        <source>Add Serial Number</source>
        <translation>Add Serial Number</translation>
    </message>
    <message>
        <source>Printed labels:</source>
        <translation>Printed labels:</translation>
    </message>
    <message>
        <source>Print the labels touching each other, or with a small gap between them</source>
        <translation>Print the labels touching each other, or with a small gap between them</translation>
    </message>
    <message>
        <source>Side by Side</source>
        <translation>Side by Side</translation>
    </message>
    <message>
        <source>Spaced Apart</source>
        <translation>Spaced Apart</translation>
    </message>
    <message>
        <source>How large the label is shown</source>
        <translation>How large the label is shown</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Undo</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Redo</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>Cu&amp;t</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Copy</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Paste</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>Select &amp;All</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>Zoom &amp;In</translation>
    </message>
    <message>
        <source>Zoom &amp;Out</source>
        <translation>Zoom &amp;Out</translation>
    </message>
    <message>
        <source>&amp;Actual Size</source>
        <translation>&amp;Actual Size</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Edit</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;View</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Serial Exceeded Space Alert Message</source>
        <translation>The serial number no longer fits on the label.</translation>
    </message>
    <message>
        <source>Serial Exceeded Space Alert Informative</source>
        <translation>The new quantity or first number needs a longer serial number than the label has room for, so the serial number was taken out. Make the label larger or its text smaller, then add the serial number again.</translation>
    </message>
    <message>
        <source>Space Limit Alert Message</source>
        <translation>The text does not fit on the label.</translation>
    </message>
    <message>
        <source>Space Limit Alert Informative</source>
        <translation>The label has a size of its own, and the text you typed would need more room than it has. Make the label larger, or the text smaller or shorter.</translation>
    </message>
    <message>
        <source>Cell Size Alert Message</source>
        <translation>The label is too large for the paper.</translation>
    </message>
    <message>
        <source>Cell Size Alert Informative</source>
        <translation>One label has to fit inside the paper’s margins. Make the label smaller, or choose larger paper or smaller margins in Page Setup.</translation>
    </message>
</context>
<context>
    <name>lomir::PageSetupDialog</name>
    <message>
        <source>Page Setup</source>
        <translation>Page Setup</translation>
    </message>
    <message>
        <source>The margins leave no room for labels on this paper.</source>
        <translation>The margins leave no room for labels on this paper.</translation>
    </message>
    <message>
        <source>Printer Calibration</source>
        <translation>Printer Calibration</translation>
    </message>
    <message>
        <source>Print Calibration Page</source>
        <translation>Print Calibration Page</translation>
    </message>
    <message>
        <source>Millimeters</source>
        <translation>Millimeters</translation>
    </message>
    <message>
        <source>Inches</source>
        <translation>Inches</translation>
    </message>
    <message>
        <source>Points</source>
        <translation>Points</translation>
    </message>
    <message>
        <source>Portrait</source>
        <translation>Portrait</translation>
    </message>
    <message>
        <source>Landscape</source>
        <translation>Landscape</translation>
    </message>
    <message>
        <source>by</source>
        <translation>by</translation>
    </message>
    <message>
        <source>Top:</source>
        <translation>Top:</translation>
    </message>
    <message>
        <source>Left:</source>
        <translation>Left:</translation>
    </message>
    <message>
        <source>Right:</source>
        <translation>Right:</translation>
    </message>
    <message>
        <source>Bottom:</source>
        <translation>Bottom:</translation>
    </message>
    <message>
        <source>Paper:</source>
        <translation>Paper:</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Size:</translation>
    </message>
    <message>
        <source>Orientation:</source>
        <translation>Orientation:</translation>
    </message>
    <message>
        <source>Units:</source>
        <translation>Units:</translation>
    </message>
    <message>
        <source>Margins:</source>
        <translation>Margins:</translation>
    </message>
    <message>
        <source> mm</source>
        <translation> mm</translation>
    </message>
    <message>
        <source> %</source>
        <translation> %</translation>
    </message>
    <message>
        <source>No printer is set up</source>
        <translation>No printer is set up</translation>
    </message>
    <message>
        <source>Printer:</source>
        <translation>Printer:</translation>
    </message>
    <message>
        <source>Move right by:</source>
        <translation>Move right by:</translation>
    </message>
    <message>
        <source>Move down by:</source>
        <translation>Move down by:</translation>
    </message>
    <message>
        <source>Scale:</source>
        <translation>Scale:</translation>
    </message>
    <message>
        <source>Labels printed on this printer are moved and scaled by these amounts. Print a calibration page and measure where its marks land to find them.</source>
        <translation>Labels printed on this printer are moved and scaled by these amounts. Print a calibration page and measure where its marks land to find them.</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Custom</translation>
    </message>
</context>
<context>
    <name>lomir::PrintController</name>
    <message>
        <source>The labels could not be printed.</source>
        <translation>The labels could not be printed.</translation>
    </message>
    <message>
        <source>The PDF “%1” could not be written.</source>
        <translation>The PDF “%1” could not be written.</translation>
    </message>
    <message>
        <source>Calibration Page</source>
        <translation>Calibration Page</translation>
    </message>
    <message>
        <source>PDF</source>
        <translation>PDF</translation>
    </message>
    <message>
        <source>Calibration page for “%1”, printed moved %2 mm right and %3 mm down and scaled to %4%. Measure from the paper&apos;s left and top edges to each crosshair: it should lie as many millimeters in as its ruler says. Where the print lies too far right or down, lower these numbers in Page Setup by the difference; where it lies too far left or up, raise them. If a ruler measures longer or shorter than marked, change the scale by the same share.</source>
        <translation>Calibration page for “%1”, printed moved %2 mm right and %3 mm down and scaled to %4%. Measure from the paper&apos;s left and top edges to each crosshair: it should lie as many millimeters in as its ruler says. Where the print lies too far right or down, lower these numbers in Page Setup by the difference; where it lies too far left or up, raise them. If a ruler measures longer or shorter than marked, change the scale by the same share.</translation>
    </message>
    <message>
        <source>The calibration page could not be printed.</source>
        <translation>The calibration page could not be printed.</translation>
    </message>
    <message>
        <source>Printing “%1”…</source>
        <translation>Printing “%1”…</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Printing</source>
        <translation>Printing</translation>
    </message>
    <message>
        <source>Printed page %1 of %2…</source>
        <translation>Printed page %1 of %2…</translation>
    </message>
</context>
<context>
    <name>lomir::PrintPreviewDialog</name>
    <message>
        <source>&amp;Print…</source>
        <translation>&amp;Print…</translation>
    </message>
    <message>
        <source>Print Preview of “%1”</source>
        <translation>Print Preview of “%1”</translation>
    </message>
    <message>
        <source>Previous Page</source>
        <translation>Previous Page</translation>
    </message>
    <message>
        <source>of %1</source>
        <translation>of %1</translation>
    </message>
    <message>
        <source>Next Page</source>
        <translation>Next Page</translation>
    </message>
    <message>
        <source>Zoom Out</source>
        <translation>Zoom Out</translation>
    </message>
    <message>
        <source>Zoom In</source>
        <translation>Zoom In</translation>
    </message>
    <message>
        <source>Fit Width</source>
        <translation>Fit Width</translation>
    </message>
    <message>
        <source>Fit Page</source>
        <translation>Fit Page</translation>
    </message>
</context>
<context>
    <name>lomir::NegativeFeedbackViewController</name>
    <message>
        <source>Feedback</source>
        <translation>Feedback</translation>
    </message>
    <message>
        <source>We are sorry Lomir does not suit you yet.</source>
        <translation>We are sorry Lomir does not suit you yet.</translation>
    </message>
    <message>
        <source>Would you tell us what we could do better? Share Feedback starts an e-mail to us with the versions of Lomir and of your system filled in.</source>
        <translation>Would you tell us what we could do better? Share Feedback starts an e-mail to us with the versions of Lomir and of your system filled in.</translation>
    </message>
    <message>
        <source>Don't Ask Again</source>
        <translation>Don't Ask Again</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Not Now</translation>
    </message>
    <message>
        <source>Share Feedback</source>
        <translation>Share Feedback</translation>
    </message>
</context>
<context>
    <name>lomir::ReviewViewController</name>
    <message>
        <source>Enjoying Lomir?</source>
        <translation>Enjoying Lomir?</translation>
    </message>
    <message>
        <source>Do you like Lomir?</source>
        <translation>Do you like Lomir?</translation>
    </message>
    <message>
        <source>Your answer helps us make Lomir better. We ask only until you answer.</source>
        <translation>Your answer helps us make Lomir better. We ask only until you answer.</translation>
    </message>
    <message>
        <source>No</source>
        <translation>No</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Yes</translation>
    </message>
</context>
</TS>
