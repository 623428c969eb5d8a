// access/formats/xbase/table_plan.h - the header of a table that is written anew, and where its
// fields come from.
//
// Descriptors of fields that stay are taken over byte by byte, with whatever other programs keep in
// them. The null flags are a column of their own, always the last, made for the fields that need
// it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "access/formats/xbase/dbf_format.h"
#include "access/formats/xbase/dbf_header.h"
#include "access/layout.h"

namespace velnor::xbase {

struct NewField;

struct TablePlan {
    std::vector<std::uint8_t> header;  ///< without records and without indexes, with its end mark
    std::vector<int> sources;          ///< for each field the one it comes from; -1: new, Null
};

/// `bytes`: the whole header that was read as `header`.
class TablePlanner {
public:
    TablePlanner(std::span<const std::uint8_t> bytes, const DbfHeader& header,
                 const NewTableForm& form);

    /// 3191 for a name that is there in what is kept of it, 3190 and 3047 for a table that gets too
    /// large, 3251 for a type that this kind of table lacks.
    void add(const FieldDef& def);
    /// 3001 for the only field.
    void drop(std::size_t field);
    /// A longer field of the same type. 3251 for another type or a shorter field.
    void widen(std::size_t field, const FieldDef& def);
    TablePlan plan() const;

private:
    struct Column {
        std::vector<std::uint8_t> descriptor;
        std::uint32_t length = 0;
        char letter = 'C';
        std::uint8_t flags = 0;
        int source = -1;  ///< field of the old table
        bool hidden = false;
    };

    NewTableForm formFor(const NewTableForm& word) const;
    Column columnOf(const DbfField& field, int source) const;
    std::vector<std::uint8_t> newDescriptor(const NewField& made) const;
    void checkSize() const;
    Column nullFlags() const;
    std::uint8_t version(const std::vector<Column>& columns) const;
    bool anyOf(const std::vector<Column>& columns, std::string_view letters) const;
    bool keepsPlaces() const;

    std::span<const std::uint8_t> bytes_;
    const DbfHeader& header_;
    NewTableForm form_;
    std::vector<Column> columns_;  // in the order of the record, without the null flags
};

}  // namespace velnor::xbase
