<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
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
        <source>Text Colour...</source>
        <translation>Text Colour...</translation>
    </message>
    <message>
        <source>Text colour</source>
        <translation>Text colour</translation>
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
        <source>Text Colour</source>
        <translation>Text Colour</translation>
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
        <translation>The label's width and height</translation>
    </message>
    <message>
        <source>The unit label sizes are shown and typed in</source>
        <translation>The unit label sizes are shown and typed in</translation>
    </message>
    <message>
        <source>Millimetres</source>
        <translation>Millimetres</translation>
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
</context>
</TS>
