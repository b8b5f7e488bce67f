#include "app/commandline.h"

#include "app/printcommand.h"
#include "app/printoptions.h"
#include "base/errors.h"
#include "document/documentfile.h"
#include "document/documentformats.h"

#include <QCoreApplication>
#include <QTextStream>
#include <nlohmann/json.hpp>

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

OrderedJson colourJson(const std::optional<Rgba>& colour)
{
    return colour ? OrderedJson(utf8(colour->toHex())) : OrderedJson(nullptr);
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

OrderedJson labelTextJson(const RichText& text)
{
    OrderedJson runs = OrderedJson::array();
    for (const AttributeRun& run : text.runs()) {
        const TextAttributes& attributes = run.attributes;
        OrderedJson entry;
        entry["location"] = run.location;
        entry["length"] = run.length;
        if (attributes.font) {
            entry["font"] = attributes.font->postScriptName.isEmpty()
                                ? OrderedJson(nullptr)
                                : OrderedJson(utf8(attributes.font->postScriptName));
            entry["family"] = utf8(attributes.font->family);
            entry["size"] = attributes.font->pointSize;
        } else {
            entry["font"] = nullptr;
            entry["family"] = nullptr;
            entry["size"] = nullptr;
        }
        entry["bold"] = attributes.font && attributes.font->bold;
        entry["italic"] = attributes.font && attributes.font->italic;
        entry["underline"] = lineStyleNumber(attributes.underline);
        entry["strikethrough"] = lineStyleNumber(attributes.strikethrough);
        entry["foreground"] = colourJson(attributes.foreground);
        entry["background"] = colourJson(attributes.background);
        entry["alignment"] = alignmentName(attributes.paragraph);
        runs.push_back(std::move(entry));
    }
    OrderedJson result;
    result["string"] = utf8(text.string());
    result["runs"] = std::move(runs);
    return result;
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

OrderedJson inspectJson(const QString& type, const Content& record)
{
    OrderedJson result;
    result["type"] = utf8(type);
    result["labelText"] = labelTextJson(record.labelText.nsAttributedString());
    result["quantity"] = utf8(record.quantity);
    result["serialStartFrom"] = optionalJson(record.serialStartFrom);
    result["width"] = utf8(record.width);
    result["height"] = utf8(record.height);
    result["dimensions"] = record.dimensions;
    result["metric"] = record.metric;
    result["magnification"] = record.magnification;
    result["outputSpacing"] = record.outputSpacing;
    result["frameWidth"] = optionalJson(record.frameWidth);
    result["frameHeight"] = optionalJson(record.frameHeight);
    return result;
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
    out << QString::fromStdString(inspectJson(*type, *record).dump(2)) << '\n';
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
