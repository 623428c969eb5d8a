#include "copy/copy_log.h"

#include "access/value_text.h"
#include "access/workspace.h"
#include "core/attempt.h"
#include "core/date_text.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/keyed_tree.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/wait_pointer.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* kTable = "CopyLogFieldMap";

Database openStore()
{
    return workspace().OpenDatabase((globals().APP_PATH + u"\\DataTabl.MDB"_s).toStdString(), false,
                                    false, "");
}

void put(Recordset& rows, const char* column, const QString& text)
{
    const std::string bytes = text.toStdString();
    rows.Fields().Item(column).Value(ValueView::text(bytes));
}

void putNumber(Recordset& rows, const char* column, const QString& text)
{
    rows.Fields().Item(column).Value(ValueView::real(text::val(text)));
}

QString get(Recordset& rows, const char* column)
{
    const ValueView value = rows.Fields().Item(column).Value();
    if (value.isNull())
        return {};
    std::string text;
    appendText(text, value);
    return fromUtf8(text);
}

void writeRow(Recordset& rows, const CopyLogHead& head, const QString& line)
{
    rows.AddNew();
    put(rows, "FromTablePath", head.fromPath);
    put(rows, "ToTablePath", head.fromPath);
    put(rows, "FromRecordName", head.fromRecord);
    put(rows, "ToRecordName", head.toRecord);
    const auto pieces = cutMatchLine(line);
    put(rows, "FromFieldName", pieces[0]);
    put(rows, "FromFieldType", text::trim(pieces[1]));
    putNumber(rows, "FromFieldSize", pieces[2]);
    put(rows, "TOFIELDNAME", pieces[3]);
    put(rows, "ToFieldType", text::trim(pieces[4]));
    putNumber(rows, "ToFieldSize", pieces[5]);
    put(rows, "DateCreated", globals().STAMP_KEY);
    rows.Update();
}

void tellError(const Outcome& failed, QWidget* parent)
{
    prompt().tell(parent,
                  u"Error - %1 - %2"_s.arg(QString::number(failed.number), failed.description));
}

/// The nodes of the log in the order of its dates.
class LogTree {
public:
    explicit LogTree(KeyedTree& tree) : tree_(tree) {}

    void addRow(Recordset& rows)
    {
        const QString stamp = get(rows, "DateCreated");
        const QString from = get(rows, "FromTablePath"), to = get(rows, "ToTablePath");
        const QString fromRecord = get(rows, "FromRecordName"),
                      toRecord = get(rows, "ToRecordName");
        if (stamp != date_) {
            dateKey_ = StampToDisplay(stamp);
            tree_.add(dateKey_, dateKey_, KeyedTree::Date);
            date_ = stamp;
            copy_.clear();
        }
        const QString copy = stamp + from + fromRecord + toRecord;
        if (copy != copy_) {
            expand(
                tree_.addChild(dateKey_, copy,
                               from + u" - "_s + fromRecord + u" --> "_s + to + u" - "_s + toRecord,
                               KeyedTree::File));
            copy_ = copy;
        }
        const QString field = get(rows, "FromFieldName"), toField = get(rows, "TOFIELDNAME");
        expand(tree_.addChild(copy, stamp + from + to + fromRecord + toRecord + field + toField,
                              field + u" --> "_s + toField, KeyedTree::Field));
    }

private:
    static void expand(QTreeWidgetItem* node)
    {
        if (node)
            node->setExpanded(true);
    }

    KeyedTree& tree_;
    QString date_, dateKey_, copy_;
};

}  // namespace

std::array<QString, 6> cutMatchLine(const QString& line)
{
    std::array<QString, 6> pieces;
    int start = 1, search = 0, skip = 0;
    for (int k = 1; k <= 6; ++k) {
        search = text::instr(line, k == 3 ? u" = "_s : u" - "_s, search + 1);
        if (search > 0 || k == 6) {
            int length = search - start;
            if (k == 6) {
                length = static_cast<int>(line.size()) - start;
                start += 3;
                skip = 0;
            }
            pieces[static_cast<std::size_t>(k - 1)] = text::mid(line, start + skip, length - skip);
            skip = 3;
        }
        start = search;
    }
    return pieces;
}

bool writeCopyLog(const CopyLogHead& head, const QStringList& matchLines, QWidget* parent)
{
    const WaitPointer wait;
    const Outcome written = attempt([&] {
        Database store = openStore();
        Recordset rows = store.OpenRecordset(kTable, RecordsetType::Table);
        RefreshDateStamps();
        for (const QString& line : matchLines)
            writeRow(rows, head, line);
        store.Close();
    });
    if (!written)
        tellError(written, parent);
    return bool(written);
}

bool ViewCopyLog(KeyedTree& SSTree1)
{
    const WaitPointer wait;
    bool done = false;
    attempt([&] {  // the nodes that were added stay
        Database store = openStore();
        Recordset rows = store.OpenRecordset(kTable, RecordsetType::Table);
        SSTree1.clearNodes();
        if (rows.RecordCount() == 0)
            return;
        rows.Index("DateIndex");
        LogTree tree(SSTree1);
        for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext())
            tree.addRow(rows);
        done = true;
    });
    return done;
}

void clearCopyLog(QWidget* parent)
{
    if (!prompt().ask(parent, u"Do you want to Delete all Records in the Copy Log?"_s))
        return;
    const WaitPointer wait;
    const Outcome cleared = attempt([] {
        Database store = openStore();
        Recordset rows = store.OpenRecordset(kTable, RecordsetType::Table);
        if (rows.RecordCount() != 0)
            for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext())
                rows.Delete();
        store.Close();
    });
    if (!cleared)
        tellError(cleared, parent);
}

}  // namespace velnor
