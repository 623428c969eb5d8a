// copy/field_pair.h - one match as positions: which source field goes into which target field.
#pragma once

namespace velnor {

/// Positions from 0 in the fields of the two recordsets.
struct FieldPair {
    short from = 0;
    short to = 0;
    friend bool operator==(const FieldPair&, const FieldPair&) = default;
};

}  // namespace velnor
