#include "core/settings.h"

#include <algorithm>
#include <cmath>

#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/positional_text.h"
#include "core/prompt.h"
#include "core/text.h"
#include "platform/run_error.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 kLongestFile = 1 << 20;  // no settings come near; the rest of a longer file is
                                          // nobody's
constexpr int kFileNotFound = static_cast<int>(RunErrorNumber::FileNotFound);
constexpr int kLeastFirstBlock = 1000;
constexpr int kFirstFolder = 1;
constexpr int kLastFolderCleared = 200;
const QString kFolderMark = u" - "_s;

QString settingsFile(const char* name)
{
    return globals().APP_PATH + u'\\' + QString::fromLatin1(name);
}

/// Line 1 of Options.INI.
std::array<int*, 21> numbersOf(Globals& G)
{
    return {&G.MAIN_LEFT,         &G.MAIN_TOP,       &G.MAIN_HEIGHT,    &G.MAIN_WIDTH,
            &G.SHELL_LEFT,        &G.SHELL_TOP,      &G.SHELL_HEIGHT,   &G.SHELL_WIDTH,
            &G.SAVED_WIDTH_1,     &G.SAVED_HEIGHT_1, &G.SAVED_MARGIN,   &G.SAVED_WIDTH_2,
            &G.SAVED_HEIGHT_2,    &G.SAVED_HEIGHT_3, &G.FILE_LIST_VIEW, &G.SEARCH_FIRST_BLOCK,
            &G.SEARCH_NEXT_BLOCK, &G.MENU_STYLE,     &G.MENU_FONT_TYPE, &G.LABEL_TEXT_TYPE,
            &G.GRID_ROW_HEIGHT};
}

/// Lines 2 to 5.
std::array<QString*, 4> textsOf(Globals& G)
{
    return {&G.OPTION_TEXT_1, &G.OPTION_TEXT_2, &G.DEFAULT_MAIL_FROM, &G.COMPUTER_NAME};
}

/// Line 16.
std::array<bool*, 11> flagsOf(Globals& G)
{
    return {&G.BOLD_TEXT,
            &G.SHOW_TIPS,
            &G.STARTUP_FLG,
            &G.ASK_COMPUTER_NAME,
            &G.EXPLORER_GRID_LINES,
            &G.GRID_LINES,
            &G.PROMPT_SAVE_COPYTO,
            &G.PROMPT_SAVE_DESIGN,
            &G.GROUP_BY_FOLDER,
            &G.SAVE_WINDOW_SIZE,
            &G.LOG_COPY};
}

std::array<ColorValue*, 21> colorsOf(Globals& G)
{
    return {&G.MAIN_BACK_COLOR,         &G.MAIN_TEXT_COLOR,    &G.LIST_BACK_COLOR,
            &G.LIST_TEXT_COLOR,         &G.ENTRY_BACK_COLOR,   &G.ENTRY_TEXT_COLOR,
            &G.UNUSED_COLOR_1,          &G.UNUSED_COLOR_2,     &G.UNUSED_COLOR_3,
            &G.SELECT_BACK_COLOR,       &G.SELECT_TEXT_COLOR,  &G.ENTRY_WINDOW_BACK_COLOR,
            &G.ENTRY_WINDOW_TEXT_COLOR, &G.BROWSER_BACK_COLOR, &G.BROWSER_TEXT_COLOR,
            &G.TIPS_BACK_COLOR,         &G.TIPS_TEXT_COLOR,    &G.TOOLBAR_BACK_COLOR,
            &G.TOOLBAR_TEXT_COLOR,      &G.DESIGN_BACK_COLOR,  &G.DESIGN_TEXT_COLOR};
}

void readOptions(PositionalReader& in, MailFavorites& favorites)
{
    auto& G = globals();
    for (int* number : numbersOf(G))
        *number = in.number();
    for (QString* text : textsOf(G))
        *text = in.text();
    for (QString& favorite : favorites)
        favorite = in.text();
    const auto flags = flagsOf(G);
    std::array<qint32, flags.size()> read{};
    for (qint32& number : read)
        number = in.number();
    for (std::size_t i = 0; i < flags.size(); ++i)
        *flags[i] = read[i] == 1;

    if (G.SEARCH_FIRST_BLOCK < kLeastFirstBlock)
        G.SEARCH_FIRST_BLOCK = Globals().SEARCH_FIRST_BLOCK;
    if (G.SEARCH_NEXT_BLOCK == 0)
        G.SEARCH_NEXT_BLOCK = Globals().SEARCH_NEXT_BLOCK;
}

QString writtenOptions(const MailFavorites& favorites)
{
    auto& G = globals();
    PositionalWriter out;
    for (const int* number : numbersOf(G))
        out.number(*number);
    out.endLine();
    for (const QString* text : textsOf(G))
        out.text(*text);
    for (const QString& favorite : favorites)
        out.text(favorite);
    for (const bool* flag : flagsOf(G))
        out.number(*flag ? 1 : 0);
    out.endLine();
    return out.content();
}

}  // namespace

void LoadOptions(MailFavorites& favorites, QWidget* parent)
{
    const Outcome read = attempt([&] {
        const QString content = readTextFile(settingsFile("Options.INI"), kLongestFile);
        PositionalReader in(content);
        readOptions(in, favorites);
    });
    if (read)
        return;
    prompt().tell(parent, read.number == kFileNotFound
                              ? u"Use the Utility Menu Option - Set Program Options"_s
                              : u"         Error Loading Application Options"_s);
}

void SaveOptions(const MailFavorites& favorites, QWidget* parent)
{
    const Outcome written =
        attempt([&] { replaceTextFile(settingsFile("Options.INI"), writtenOptions(favorites)); });
    if (!written)
        prompt().tell(
            parent, u"Error: %1 - %2"_s.arg(QString::number(written.number), written.description));
}

void LoadColors(QWidget* parent)
{
    const Outcome read = attempt([] {
        const QString content = readTextFile(settingsFile("Colors.INI"), kLongestFile);
        PositionalReader in(content);
        for (ColorValue* color : colorsOf(globals()))
            *color = in.number();
    });
    if (read)
        return;
    prompt().tell(parent, read.number == kFileNotFound
                              ? u"          Use the Utility Menu Option - Set Window Colors"_s
                              : u"Error Loading Application Window Colors"_s);
}

void SaveColors(QWidget* parent)
{
    PositionalWriter out;
    for (const ColorValue* color : colorsOf(globals()))
        out.number(*color);
    out.endLine();
    const Outcome written =
        attempt([&] { replaceTextFile(settingsFile("Colors.INI"), out.content()); });
    if (written)
        return;
    prompt().tell(parent,
                  written.number == kFileNotFound
                      ? u"Use the Utility Menu Option - Set Window Colors"_s
                      : u"Error Loading Application Window Colors"_s);  // "Loading": required
}

bool LoadFolderList(QStringList& List1)
{
    auto& G = globals();
    G.FOLDER_LIST.fill({});
    List1.clear();
    const Outcome read = attempt([&] {
        const QString content = readTextFile(settingsFile("FoldFile.INI"), kLongestFile);
        PositionalReader in(content);
        for (int entry = kFirstFolder; !in.atEnd(); ++entry) {
            const QString line = in.text();
            G.FOLDER_LIST[entry] = line;
            if (!text::trim(line).isEmpty())
                List1 << line;
        }
    });
    return static_cast<bool>(read);
}

void SaveFolderList(const QStringList& List1)
{
    auto& G = globals();
    for (int entry = 0; entry <= kLastFolderCleared; ++entry)
        G.FOLDER_LIST[entry].clear();
    PositionalWriter out;
    const QString file = settingsFile("FoldFile.INI");
    try {
        int entry = kFirstFolder;
        for (const QString& line : List1) {
            G.FOLDER_LIST[entry++] = line;
            out.text(line);
        }
    } catch (const RunError&) {
        replaceTextFile(file, out.content());
        throw;
    }
    replaceTextFile(file, out.content());
}

WorkingFolder workingFolder(const QString& line)
{
    WorkingFolder found;
    const int last = text::instrRev(line, kFolderMark);
    const int end = last > 0 ? last : static_cast<int>(line.size());
    const QString folder = end > 0 ? text::left(line, end - 1) : QString();
    if (const int cut = text::instrRev(folder, u"\\"_s); cut > 0)
        found.folder = text::left(folder, cut - 1);
    if (const int first = text::instr(line, kFolderMark); first > 0) {
        const double filter =
            text::val(text::mid(line, first + static_cast<int>(kFolderMark.size())));
        found.filter = static_cast<int>(std::nearbyint(std::clamp(filter, -1e6, 1e6)));
    }
    return found;
}

}  // namespace velnor
