// The RTF tokenizer and the control-word table on their own: what the reader's state
// machine is given for the bytes of a document.

#include "core/document/rtf/rtf.h"
#include "core/document/rtf/rtfcontrolwords.h"
#include "core/document/rtf/rtftokenizer.h"

#include <QTest>
#include <string>
#include <vector>

using namespace lomir;
using namespace lomir::rtf;

namespace {

// A token written out for comparison: "{", "}", "\word", "\word-12", "\'e9", "sym:~",
// "text:a".
QString describe(const Token& token)
{
    switch (token.kind) {
    case Token::Kind::End:
        return QStringLiteral("end");
    case Token::Kind::GroupStart:
        return QStringLiteral("{");
    case Token::Kind::GroupEnd:
        return QStringLiteral("}");
    case Token::Kind::ControlWord: {
        QString word = QLatin1Char('\\') +
                       QString::fromLatin1(token.word.data(), qsizetype(token.word.size()));
        if (token.hasParameter)
            word += QString::number(token.parameter);
        return word;
    }
    case Token::Kind::ControlSymbol:
        return QStringLiteral("sym:") + QLatin1Char(char(token.byte));
    case Token::Kind::HexByte:
        return QStringLiteral("\\'") + QString::number(token.byte, 16);
    case Token::Kind::Text:
        return QStringLiteral("text:") + QLatin1Char(char(token.byte));
    }
    return QString();
}

QStringList tokensOf(const std::string& rtf)
{
    Tokenizer tokenizer(rtf);
    QStringList tokens;
    for (Token token = tokenizer.next(); token.kind != Token::Kind::End; token = tokenizer.next())
        tokens.append(describe(token));
    return tokens;
}

} // namespace

class TestRtfTokenizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokens_data()
    {
        QTest::addColumn<QString>("rtf");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("groups and a word")
            << QStringLiteral("{\\b x}")
            << QStringList{QStringLiteral("{"), QStringLiteral("\\b"), QStringLiteral("text:x"),
                           QStringLiteral("}")};
        QTest::newRow("a space after a word belongs to it, a second is text")
            << QStringLiteral("\\par  a")
            << QStringList{QStringLiteral("\\par"), QStringLiteral("text: "),
                           QStringLiteral("text:a")};
        QTest::newRow("a negative parameter")
            << QStringLiteral("\\fi-360\\li720x")
            << QStringList{QStringLiteral("\\fi-360"), QStringLiteral("\\li720"),
                           QStringLiteral("text:x")};
        QTest::newRow("a lone minus is no parameter")
            << QStringLiteral("\\fi-x")
            << QStringList{QStringLiteral("\\fi"), QStringLiteral("text:-"),
                           QStringLiteral("text:x")};
        QTest::newRow("parameters beyond the limit are clamped")
            << QStringLiteral("\\li99999999999999999999 \\fi-1000000001 ")
            << QStringList{QStringLiteral("\\li1000000000"), QStringLiteral("\\fi-1000000000")};
        QTest::newRow("a byte in hex")
            << QStringLiteral("\\'e9\\'4")
            << QStringList{QStringLiteral("\\'e9"), QStringLiteral("\\'4")};
        QTest::newRow("a malformed hex escape stands for nothing")
            << QStringLiteral("\\'zz")
            << QStringList{QStringLiteral("text:z"), QStringLiteral("text:z")};
        QTest::newRow("control symbols")
            << QStringLiteral("\\~\\{\\*")
            << QStringList{QStringLiteral("sym:~"), QStringLiteral("sym:{"),
                           QStringLiteral("sym:*")};
        QTest::newRow("a backslash at the very end is nothing")
            << QStringLiteral("a\\") << QStringList{QStringLiteral("text:a")};
    }

    void tokens()
    {
        QFETCH(QString, rtf);
        QFETCH(QStringList, expected);
        QCOMPARE(tokensOf(rtf.toStdString()), expected);
    }

    void theLimitIsTheSharedOne()
    {
        const std::string rtf = "\\li" + std::to_string(qint64(kRtfParameterLimit) + 1);
        Tokenizer tokenizer(rtf);
        const Token token = tokenizer.next();
        QVERIFY(token.hasParameter);
        QCOMPARE(token.parameter, kRtfParameterLimit);
    }

    void binaryDataIsSkipped()
    {
        // \binN is followed by N raw bytes, braces and backslashes included.
        const std::string rtf = std::string("\\bin4 {\\}xyz");
        Tokenizer tokenizer(rtf);
        const Token bin = tokenizer.next();
        QCOMPARE(describe(bin), QStringLiteral("\\bin4"));
        tokenizer.skipBytes(bin.parameter);
        QCOMPARE(describe(tokenizer.next()), QStringLiteral("text:y"));
        // More than there is ends the data, without reading past it.
        tokenizer.skipBytes(100);
        QCOMPARE(tokenizer.next().kind, Token::Kind::End);
        tokenizer.skipBytes(-5);
        QCOMPARE(tokenizer.next().kind, Token::Kind::End);
    }

    void controlWordTable_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("word");
        QTest::addColumn<int>("character");
        QTest::newRow("bold") << QStringLiteral("b") << int(Word::Bold) << 0;
        QTest::newRow("paragraph") << QStringLiteral("par") << int(Word::Paragraph) << 0;
        QTest::newRow("code page") << QStringLiteral("ansicpg") << int(Word::AnsiCodePage) << 0;
        QTest::newRow("font charset") << QStringLiteral("fcharset") << int(Word::FontCharset) << 0;
        QTest::newRow("first in the table")
            << QStringLiteral("aftnsep") << int(Word::SkippedDestination) << 0;
        QTest::newRow("last in the table")
            << QStringLiteral("zwnj") << int(Word::Character) << 0x200C;
        QTest::newRow("a wave underline reads as single")
            << QStringLiteral("ulwave") << int(Word::Underline) << 0;
        QTest::newRow("a tab") << QStringLiteral("tab") << int(Word::Character) << int(u'\t');
        QTest::newRow("a table cell is a tab")
            << QStringLiteral("cell") << int(Word::Character) << int(u'\t');
        QTest::newRow("a line break is a line separator")
            << QStringLiteral("line") << int(Word::Character) << 0x2028;
        QTest::newRow("a page break is a form feed")
            << QStringLiteral("page") << int(Word::Character) << int(u'\f');
        QTest::newRow("em dash") << QStringLiteral("emdash") << int(Word::Character) << 0x2014;
    }

    void controlWordTable()
    {
        QFETCH(QString, name);
        QFETCH(int, word);
        QFETCH(int, character);
        const std::string letters = name.toStdString();
        const std::optional<ControlWord> found = lookUpWord(letters);
        QVERIFY(found.has_value());
        QCOMPARE(int(found->word), word);
        QCOMPARE(int(found->character), character);
    }

    void wordsTheReaderIgnoresAreNotInTheTable()
    {
        for (const char* name : {"", "bb", "pa", "parx", "zz", "B", "Par"})
            QVERIFY2(!lookUpWord(name).has_value(), name);
    }
};

QTEST_MAIN(TestRtfTokenizer)
#include "tst_rtftokenizer.moc"
