// access/formats/text/schema_ini.h - schema.ini: what a folder says about its text files.
//
//     [orders.csv]
//     ColNameHeader=True
//     Format=Delimited(;)          CSVDelimited, TabDelimited, FixedLength
//     CharacterSet=65001           ANSI, OEM, Unicode, or a code page
//     TextDelimiter="              or none
//     DecimalSymbol=,
//     DateTimeFormat=dd.mm.yyyy
//     Col1="Order no" Long
//     Col2=NAME Text Width 40
//
// Types: Bit Byte Short Integer Long Currency Single Double Float DateTime Date Decimal Text Char
// Memo LongChar. A key that is not named here is passed over, and stays when a section is written.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/text/text_form.h"
#include "platform/file_system.h"

namespace velnor::text {

inline constexpr std::string_view kSchemaFile = "schema.ini";

using SchemaKeys = std::vector<std::pair<std::string, std::string>>;  // in UTF-8

/// The keys of a file's section, in order; nothing when there is none.
std::optional<SchemaKeys> readSchema(FileSystem& files, std::string_view folder,
                                     std::string_view fileName);
/// Puts a section in place of the one of this name; empty `keys`: takes it out. The rest of the
/// file stays as it is.
void writeSchema(FileSystem& files, std::string_view folder, std::string_view fileName,
                 const SchemaKeys& keys);

/// Applies the keys. 3001 for a code page that is not known or a column that cannot be read.
void applySchema(const SchemaKeys& keys, TextForm& form);
/// The words of a column: `"Order no" Text Width 40`. 3251 for a type that text files lack.
std::string columnWords(const FieldDef& field);

}  // namespace velnor::text
