#include "program/commandline.h"

#include "core/app/printoptions.h"
#include "core/base/errors.h"
#include "core/document/documentfile.h"
#include "core/document/documentformats.h"
#include "gui/app/printcommand.h"

#include <QCoreApplication>
#include <QStringDecoder>
#include <QTextStream>
#include <nlohmann/json.hpp>
#include <unordered_map>

namespace lomir {

namespace {

using OrderedJson = nlohmann::ordered_json;

struct CommandLine
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

QString usage()
{
    return CommandLine::tr(
        "Usage:\n"
        "  lomir [FILE...]          open the label editor with these files, or a new label\n"
        "  lomir convert IN OUT     convert a label between .lomir, .txt and .rtf\n"
        "  lomir inspect FILE       print a label document as JSON\n"
        "  lomir print FILE (-o OUT.pdf | --printer NAME) [OPTIONS]\n"
        "                           print the label's copies, as the editor's Print command\n"
        "                           does, without a display:\n"
        "    -o OUT.pdf             write the pages to a PDF file\n"
        "    --printer NAME         send the job to this print queue (see “lpstat -p”)\n"
        "    --full-page            print exactly one full page of copies\n"
        "    --quantity N           print N copies instead of the document's quantity\n"
        "    --serial-start N       number the copies from N instead of the document's\n"
        "                           first number\n"
        "    --paper NAME|WxHUNIT   the paper: a name such as A4, Letter, A5 or Legal, or a\n"
        "                           size with the unit mm, in or pt (100x150mm, 4x6in);\n"
        "                           A4, or Letter where the locale uses Letter, by default\n"
        "    --margins L,T,R,B      left, top, right and bottom margins in points\n"
        "                           (default 36,36,36,36)\n"
        "    A label larger than the paper less the margins is not printed (exit status 1).\n"
        "  lomir --version          print the version\n"
        "  lomir --help             print this help\n"
        "\n"
        "Exit status: 0 when done, 1 when the command could not be carried out, 2 when it\n"
        "was not understood.\n");
}

std::string utf8(const QString& text)
{
    return text.toStdString();
}

// Line styles as the inspect output numbers them.
int lineStyleNumber(int raw)
{
    switch (raw & 0xFF) {
    case LineStyle::None:
        return 0;
    case LineStyle::Double:
        return 2;
    case LineStyle::Thick:
        return 3;
    default:
        return 1;
    }
}

OrderedJson colorJson(const std::optional<Rgba>& color)
{
    return color ? OrderedJson(utf8(color->toHex())) : OrderedJson(nullptr);
}

const char* alignmentName(const std::optional<ParagraphStyle>& paragraph)
{
    switch (paragraph ? paragraph->alignment : TextAlignment::Natural) {
    case TextAlignment::Left:
        return "left";
    case TextAlignment::Right:
        return "right";
    case TextAlignment::Center:
        return "center";
    case TextAlignment::Justified:
        return "justified";
    case TextAlignment::Natural:
        break;
    }
    return "natural";
}

template <typename T> OrderedJson optionalJson(const std::optional<T>& value)
{
    if (!value)
        return nullptr;
    if constexpr (std::is_same_v<T, QString>)
        return utf8(*value);
    else
        return *value;
}

// Prints the inspect output as it goes, in the very text that nlohmann's dump(2) gives
// for the whole object, so that a label of millions of runs needs no tree of millions of
// objects. Each value is printed by the library; only the layout is written here.
class InspectPrinter
{
public:
    explicit InspectPrinter(QTextStream& out) : m_out(out) {}

    // "key": value on a line of its own, indented for its depth; the members of an
    // object are separated by commas.
    void member(int depth, const char* key, const OrderedJson& value, bool first = false)
    {
        m_text += first ? "\n" : ",\n";
        m_text.append(std::size_t(depth * kIndent), ' ');
        m_text += OrderedJson(key).dump();
        m_text += ": ";
        literal(value.dump());
    }

    void literal(std::string_view text)
    {
        if (text.size() >= kChunkSize) {
            // A long text (the label's string) goes out without another copy.
            flush();
            write(text);
            return;
        }
        m_text += text;
        if (m_text.size() >= kChunkSize)
            flush();
    }

    // The members of a run after its place: the same for every run of one attribute
    // set, so they are printed once for each set (a text keeps equal sets as one).
    void runAttributes(const TextAttributes& attributes)
    {
        const auto [printed, added] = m_printedSets.try_emplace(&attributes);
        if (added) {
            std::swap(m_text, printed->second);
            printAttributes(attributes);
            std::swap(m_text, printed->second);
        }
        literal(printed->second);
    }

    void finish()
    {
        flush();
        m_out.flush();
    }

private:
    static constexpr int kIndent = 2;
    static constexpr int kRunDepth = 4;
    static constexpr std::size_t kChunkSize = 64 * 1024;

    void printAttributes(const TextAttributes& attributes)
    {
        if (attributes.font) {
            member(kRunDepth, "font",
                   attributes.font->postScriptName.isEmpty()
                       ? OrderedJson(nullptr)
                       : OrderedJson(utf8(attributes.font->postScriptName)));
            member(kRunDepth, "family", utf8(attributes.font->family));
            member(kRunDepth, "size", attributes.font->pointSize);
        } else {
            member(kRunDepth, "font", nullptr);
            member(kRunDepth, "family", nullptr);
            member(kRunDepth, "size", nullptr);
        }
        member(kRunDepth, "bold", attributes.font && attributes.font->bold);
        member(kRunDepth, "italic", attributes.font && attributes.font->italic);
        member(kRunDepth, "underline", lineStyleNumber(attributes.underline));
        member(kRunDepth, "strikethrough", lineStyleNumber(attributes.strikethrough));
        member(kRunDepth, "foreground", colorJson(attributes.foreground));
        member(kRunDepth, "background", colorJson(attributes.background));
        member(kRunDepth, "alignment", alignmentName(attributes.paragraph));
    }

    void flush()
    {
        write(m_text);
        m_text.clear();
    }

    // In chunks, so that the stream never holds much; the decoder keeps a character that
    // a chunk boundary splits for the next chunk.
    void write(std::string_view bytes)
    {
        for (std::size_t done = 0; done < bytes.size(); done += kChunkSize) {
            const std::string_view chunk = bytes.substr(done, kChunkSize);
            m_out << m_decoder(QByteArrayView(chunk.data(), qsizetype(chunk.size())));
        }
    }

    QTextStream& m_out;
    QStringDecoder m_decoder{QStringDecoder::Utf8};
    std::string m_text;
    std::unordered_map<const TextAttributes*, std::string> m_printedSets;
};

void printInspectOutput(const QString& type, const Content& record, QTextStream& out)
{
    InspectPrinter printer(out);
    const RichText& text = record.labelText.nsAttributedString();
    printer.literal("{");
    printer.member(1, "type", utf8(type), true);
    printer.literal(",\n  \"labelText\": {");
    printer.member(2, "string", utf8(text.string()), true);
    printer.literal(",\n    \"runs\": ");
    const RichText::Runs runs = text.runs();
    if (runs.empty()) {
        printer.literal("[]");
    } else {
        printer.literal("[");
        bool first = true;
        for (const AttributeRun& run : runs) {
            printer.literal(first ? "\n      {" : ",\n      {");
            first = false;
            printer.member(4, "location", run.location, true);
            printer.member(4, "length", run.length);
            printer.runAttributes(run.attributes);
            printer.literal("\n      }");
        }
        printer.literal("\n    ]");
    }
    printer.literal("\n  }");
    printer.member(1, "quantity", utf8(record.quantity));
    printer.member(1, "serialStartFrom", optionalJson(record.serialStartFrom));
    printer.member(1, "width", utf8(record.width));
    printer.member(1, "height", utf8(record.height));
    printer.member(1, "dimensions", record.dimensions);
    printer.member(1, "metric", record.metric);
    printer.member(1, "magnification", record.magnification);
    printer.member(1, "outputSpacing", record.outputSpacing);
    printer.member(1, "frameWidth", optionalJson(record.frameWidth));
    printer.member(1, "frameHeight", optionalJson(record.frameHeight));
    printer.literal("\n}\n");
    printer.finish();
}

// The type of a file named on the command line, or a usage error naming it.
Result<QString> typeOfArgument(const QString& path)
{
    const QString type = typeForFileName(path);
    if (type.isEmpty())
        return Error{QString(kUsageErrorDomain), kExitUsage,
                     CommandLine::tr("Cannot tell the type of “%1”: name it .lomir, .txt or .rtf.")
                         .arg(path)};
    return type;
}

int convert(const QString& input, const QString& output, QTextStream& err)
{
    const Result<QString> inputType = typeOfArgument(input);
    const Result<QString> outputType = typeOfArgument(output);
    for (const Result<QString>* type : {&inputType, &outputType}) {
        if (!*type) {
            err << type->error().message << '\n';
            return kExitUsage;
        }
    }
    const Result<Content> record = readLabelFile(input, *inputType);
    if (!record) {
        err << record.error().message << '\n';
        return kExitFailure;
    }
    const Status written = writeLabelFile(output, *record, *outputType);
    if (!written) {
        err << written.error().message << '\n';
        return kExitFailure;
    }
    return kExitSuccess;
}

int print(const QStringList& arguments, QTextStream& err)
{
    const Result<PrintCommandOptions> options =
        printCommandOptions(arguments, defaultPaperForLocale(paperLocale()));
    if (!options) {
        err << options.error().message << '\n';
        return kExitUsage;
    }
    const Result<QString> type = typeOfArgument(options->file);
    if (!type) {
        err << type.error().message << '\n';
        return kExitUsage;
    }
    return runPrintCommand(*options, *type, err);
}

int inspect(const QString& path, QTextStream& out, QTextStream& err)
{
    const Result<QString> type = typeOfArgument(path);
    if (!type) {
        err << type.error().message << '\n';
        return kExitUsage;
    }
    const Result<Content> record = readLabelFile(path, *type);
    if (!record) {
        err << record.error().message << '\n';
        return kExitFailure;
    }
    printInspectOutput(*type, *record, out);
    return kExitSuccess;
}

} // namespace

bool isCommandLineInvocation(const QStringList& arguments)
{
    if (arguments.isEmpty())
        return false;
    const QString& first = arguments.first();
    return first == u"convert" || first == u"inspect" || first == u"print" ||
           first.startsWith(u'-');
}

bool isPrintCommand(const QStringList& arguments)
{
    return arguments.value(0) == u"print";
}

int runCommandLine(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    const QString command = arguments.value(0);
    if (command == u"--version" && arguments.size() == 1) {
        out << QStringLiteral("Lomir %1\n").arg(QStringLiteral(LOMIR_VERSION));
        return kExitSuccess;
    }
    if ((command == u"--help" || command == u"-h") && arguments.size() == 1) {
        out << usage();
        return kExitSuccess;
    }
    if (command == u"convert" && arguments.size() == 3)
        return convert(arguments[1], arguments[2], err);
    if (command == u"inspect" && arguments.size() == 2)
        return inspect(arguments[1], out, err);
    if (command == u"print")
        return print(arguments.mid(1), err);

    if (command == u"convert" || command == u"inspect")
        err << (command == u"convert"
                    ? CommandLine::tr("“convert” takes an input and an output file; see "
                                      "“lomir --help”.\n")
                    : CommandLine::tr("“inspect” takes one file; see “lomir --help”.\n"));
    else
        err << CommandLine::tr("Unknown command “%1”; see “lomir --help”.\n").arg(command);
    return kExitUsage;
}

} // namespace lomir
