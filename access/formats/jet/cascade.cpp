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
                steps_.push_back({std::move(change), {}, false});
        }
        if (next == steps_.size())
            return;
        first.clear();
        Step& step = steps_[next];
        writerOf(step.change.table).follow(step.change, step.before, first);
    }
}

void Cascade::apply(Step& step, const std::vector<std::pair<int, Value>>& fields)
{
    JetWriter& writer = writerOf(step.change.table);
    if (step.change.remove)
        return writer.removeLinked(step.change.row);
    std::vector<FieldChange> changes;
    for (const auto& [field, value] : fields)
        changes.push_back({field, value.view()});
    writer.updateLinked(step.change.row, changes);
}

void Cascade::run()
{
    try {
        for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
            const bool goes = !step->change.remove &&
                              removed_.contains({step->change.table, step->change.row.word()});
            if (goes)
                continue;
            apply(*step, step->change.fields);
            step->done = true;
        }
    } catch (...) {
        undo();
        throw;
    }
}

void Cascade::undo() noexcept
{
    for (Step& step : steps_) {
        if (!step.done || step.change.remove)
            continue;
        try {
            apply(step, step.before);
        } catch (const EngineError&) {
            // What fails here is damaged: a check of the file tells.
        }
        step.done = false;
    }
}

}  // namespace velnor::jet
