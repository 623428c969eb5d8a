#include "access/formats/jet/cascade.h"

#include "access/formats/jet/jet_cursor.h"
#include "access/formats/jet/jet_writer.h"

namespace velnor::jet {

Cascade::Cascade(TableByPage tables) : tables_(std::move(tables)) {}
Cascade::~Cascade() = default;

JetWriter& Cascade::writerOf(PageNumber table)
{
    auto& writer = writers_[table];
    if (!writer)
        writer = std::make_unique<JetWriter>(tables_(table), tables_, false);
    return *writer;
}

void Cascade::plan(PageNumber table, RowPointer self, std::vector<LinkedChange> first)
{
    removed_.emplace(table, self.word());
    for (std::size_t next = 0;; ++next) {
        for (LinkedChange& change : first) {
            // A ring of records leads back to one that has been met.
            const bool fresh =
                change.remove
                    ? removed_.emplace(change.table, change.row.word()).second
                    : changed_.emplace(change.table, change.end, change.row.word()).second;
            if (fresh)
                steps_.push_back(std::move(change));
        }
        if (next == steps_.size())
            return;
        first.clear();
        writerOf(steps_[next].table).follow(steps_[next], first);
    }
}

void Cascade::addTables(std::vector<JetTable*>& tables) const
{
    for (const auto& [page, writer] : writers_)
        tables.push_back(&writer->table());
}

void Cascade::apply(const LinkedChange& change)
{
    JetWriter& writer = writerOf(change.table);
    if (change.remove)
        return writer.removeLinked(change.row);
    std::vector<FieldChange> changes;
    for (const auto& [field, value] : change.fields)
        changes.push_back({field, value.view()});
    writer.updateLinked(change.row, changes);
}

void Cascade::run()
{
    for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
        const bool goes = !step->remove && removed_.contains({step->table, step->row.word()});
        if (!goes)
            apply(*step);
    }
}

}  // namespace velnor::jet
