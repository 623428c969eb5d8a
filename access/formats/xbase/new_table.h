// access/formats/xbase/new_table.h - the files of a new table.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/xbase/dbf_format.h"
#include "access/layout.h"
#include "platform/file_system.h"

namespace velnor::xbase {

struct NewField {
    std::string name;
    char letter = 'C';
    std::uint8_t length = 0;
    std::uint8_t decimals = 0;
    std::uint8_t flags = 0;
};

/// One field as a kind of table has it: 3251 for a type that it lacks.
NewField newField(const FieldDef& def, const NewTableForm& form);
/// The hidden column with so many bits for fields that may be Null.
NewField nullFlagsField(int bits);
/// The descriptor of a field, without its place in the record; `to` holds zeros.
void putDescriptor(const NewField& made, const HeaderShape& shape, std::uint8_t* to);

/// The fields of a new table as its kind has them. 3191 for two names equal in ten characters, 3190
/// and 3047 for too many or too long ones, 3251 for a type that the kind lacks.
std::vector<NewField> newFields(const TableLayout& layout, const NewTableForm& form);

/// The header, with no record, and the end mark behind it.
std::vector<std::uint8_t> newHeader(const std::vector<NewField>& fields, const NewTableForm& form,
                                    std::uint8_t languageMark);

/// Makes the memo file and then the DBF: the table is there when the DBF is. Indexes are
/// added afterwards. `codePage`: what the user asked for; empty: the usual one of the kind.
void createTableFiles(FileSystem& files, const std::string& path, const TableLayout& layout,
                      const NewTableForm& form, const std::string& codePage);

}  // namespace velnor::xbase
