#include "access/formats/xbase/table_rewrite.h"

#include <algorithm>
#include <optional>

#include "access/engine_error.h"
#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/field_encode.h"
#include "access/formats/xbase/record_mover.h"
#include "access/storage/replace_set.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kReadBytes = 256u << 10;
constexpr std::size_t kMostPendingBytes = 8u << 20;

class TableRewrite {
public:
    TableRewrite(DbfTable& table, const TablePlan& plan, RewriteKind kind,
                 const ProblemSink* report)
        : old_(table), plan_(plan), kind_(kind), report_(report),
          replacement_(table.fileSystem(), table.path())
    {
    }

    void run()
    {
        if (kind_ != RewriteKind::Repair)
            old_.indexes().needRebuildable();
        makeFiles();
        copyRecords();
        made_->indexes().takeOver(old_.indexes(), report_);
        made_->commit();
        made_.reset();
        dropFilesWithoutSibling();
        replacement_.commit();
    }

private:
    FileSystem& files() { return old_.fileSystem(); }
    void write(const std::string& path, const std::vector<std::uint8_t>& bytes);
    void makeFiles();
    void makeMemoFile();
    void copyRecords();
    void copyBlock(std::uint32_t first, std::uint32_t records);
    void moveMemos(const std::uint8_t* record);
    void tellOfLostMemos();
    void dropFilesWithoutSibling();

    DbfTable& old_;
    const TablePlan& plan_;
    RewriteKind kind_;
    const ProblemSink* report_;
    SetReplacement replacement_;
    std::optional<DbfTable> made_;
    std::optional<RecordMover> mover_;
    std::vector<std::uint8_t> block_, record_;
    std::string memo_;
    std::uint64_t lostMemos_ = 0;
};

void TableRewrite::write(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    replacement_.replace(path);
    const auto file = files().open(SetReplacement::siblingOf(path), OpenMode::Replace);
    file->writeAt(0, bytes);
}

/// 3. A memo file is made for the first memo field and by packing; it goes with the last field.
void TableRewrite::makeMemoFile()
{
    const DbfHeader now = readHeader(std::span(plan_.header).first(plan_.header.size() - 1),
                                     plan_.header.size(), old_.opening().codePage);
    MemoFile* memo = old_.memo();
    if (!now.hasMemoField()) {
        if (memo)
            replacement_.remove(old_.memoPath());
        return;
    }
    if (memo && kind_ == RewriteKind::Fields)
        return;
    const MemoForm form = memo ? memo->form() : now.format->memo;
    const std::string path =
        memo ? old_.memoPath()
             : paths::withExtension(old_.path(), form == MemoForm::Fpt ? "FPT" : "DBT");
    write(path, newMemoHeader(form, paths::foldName(paths::baseName(path)),
                              memo ? memo->blockSize() : 0));
}

void TableRewrite::makeFiles()
{
    write(old_.path(), plan_.header);
    makeMemoFile();
    for (const std::string& name : old_.indexFiles())
        replacement_.replace(paths::join(paths::folder(old_.path()), name));
    TableOpening opening = old_.opening();
    opening.beingMade = true;
    made_.emplace(opening);
    mover_.emplace(old_.header(), made_->header(), plan_.sources);
    record_.resize(made_->header().recordLength);
}

void TableRewrite::moveMemos(const std::uint8_t* record)
{
    const DbfHeader& from = old_.header();
    const DbfHeader& to = made_->header();
    for (std::size_t i = 0; i < to.fields.size(); ++i) {
        const DbfField& field = to.fields[i];
        if (!field.isMemo() || plan_.sources[i] < 0)
            continue;
        const std::uint64_t block =
            memoBlock(from, from.fields[static_cast<std::size_t>(plan_.sources[i])], record);
        if (block == 0)
            continue;
        const std::uint32_t moved = block == kBadPointer || !old_.memo()
                                        ? 0
                                        : made_->memo()->take(*old_.memo(), block, memo_);
        lostMemos_ += moved == 0;
        putMemoBlock(to, field, moved, record_.data());
    }
}

void TableRewrite::tellOfLostMemos()
{
    if (lostMemos_ && report_)
        (*report_)(
            {std::string(paths::fileName(old_.path())),
             std::to_string(lostMemos_) + " memos are not in the memo file; they are Null now.",
             false});
}

/// Index files of which nothing could be built.
void TableRewrite::dropFilesWithoutSibling()
{
    for (const std::string& name : old_.indexFiles()) {
        const std::string path = paths::join(paths::folder(old_.path()), name);
        if (!files().fileExists(SetReplacement::siblingOf(path)))
            replacement_.remove(path);
    }
}

void TableRewrite::copyBlock(std::uint32_t first, std::uint32_t records)
{
    const std::uint32_t length = old_.header().recordLength;
    old_.readRecords(first, records, block_);
    for (std::uint32_t i = 0; i < records; ++i) {
        const std::uint8_t* record = block_.data() + std::size_t{i} * length;
        if (kind_ == RewriteKind::Pack && *record == '*')
            continue;
        mover_->move(record, made_->count() + 1, record_.data());
        if (kind_ != RewriteKind::Fields && made_->memo())
            moveMemos(record);
        made_->append(record_);
    }
}

void TableRewrite::copyRecords()
{
    const std::uint32_t length = old_.header().recordLength;
    const auto atOnce = static_cast<std::uint32_t>(std::max<std::size_t>(1, kReadBytes / length));
    block_.resize(std::size_t{atOnce} * length);
    for (std::uint32_t first = 1; first <= old_.count(); first += atOnce) {
        copyBlock(first, std::min(atOnce, old_.count() - first + 1));
        if (made_->pendingBytes() > kMostPendingBytes)
            made_->commit();
    }
    for (std::size_t i = 0; i < made_->header().fields.size(); ++i)
        if (made_->header().fields[i].autonumber && plan_.sources[i] < 0)
            made_->setNextNumber(i, made_->count() + 1);
    made_->noteChange();
    made_->commit();
    tellOfLostMemos();
}

}  // namespace

void rewriteTable(DbfTable& table, const TablePlan& plan, RewriteKind kind,
                  const ProblemSink* report)
{
    TableRewrite(table, plan, kind, report).run();
}

}  // namespace velnor::xbase
