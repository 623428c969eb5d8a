// tests/access/random/random_run.h - one run of random operations on a table and its model.
#pragma once

#include <memory>
#include <optional>

#include "tests/access/random/model_table.h"

namespace velnor::testing {

class RandomRun {
public:
    RandomRun(const RandomFormat& format, unsigned seed);
    ~RandomRun();
    void run(int operations);

private:
    void openStore();
    void reopen();
    void judge();
    void one();
    void everySoOften(int operation);

    // Records.
    Value makeValue(const FieldDef& field);
    Value readBack(const FieldDef& field, const Value& written) const;
    ModelRow newRow();
    void insertOne();
    void updateOne();
    void removeOne();
    std::int64_t anyName();
    RowId place(std::int64_t name);

    // Reading.
    void seekOne();
    void walkSome();
    void compareAll();
    void compareInOrder(const IndexDef& index);
    void compareRecord(RowCursor& cursor, const ModelRow& row);

    // Structure.
    void changeStructure();
    void addOrDropField();
    void addOrDropIndex();
    void makeAnew();

    const std::string& table() const { return format_.start.name; }

    const RandomFormat& format_;
    Random random_;
    MemoryFileSystem files_;
    std::unique_ptr<Store> store_;
    std::unique_ptr<RowWriter> writer_;
    std::unique_ptr<RowCursor> cursor_;  // by keyIndex, or in no order
    ModelTable model_;
    std::map<std::int64_t, RowId> places_;  // without a keyIndex
    bool growing_ = true;
};

}  // namespace velnor::testing
