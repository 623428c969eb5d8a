// access/formats/xbase/index_forms.h - the form of keys in index files that are there: what the
// file says of them, and what their expression gives.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "access/formats/xbase/index_key.h"
#include "access/formats/xbase/index_tag.h"

namespace velnor::xbase {

enum class IndexKind : std::uint8_t { Cdx, Idx, Mdx, Ndx };

/// By the extension.
IndexKind kindOfFile(std::string_view name);
/// CDX and IDX files.
bool isFox(IndexKind kind);

/// 3018: the header of an index does not fit its expression.
[[noreturn]] void misfit();

/// The form of keys in a FoxPro index whose header says this of them. 3018 as above.
KeyForm foxFormOf(const IndexTag& tag, const IndexExpression& expression);
/// The form of keys in a file of dBASE, by its header alone.
std::optional<KeyForm> dbaseFormOf(IndexKind kind, const IndexTag& tag);
/// 3018 when an expression does not give such keys; settles what only the expression tells.
void needFit(IndexKind kind, KeyForm& form, const IndexExpression& expression);

}  // namespace velnor::xbase
