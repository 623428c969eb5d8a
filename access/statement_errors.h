// access/statement_errors.h - the engine's numbers that only statements have.
#pragma once

#include "access/engine_error.h"

namespace velnor {

inline constexpr EngineErrorNumber kAmbiguousField{3079};  ///< a name in more than one table
inline constexpr EngineErrorNumber kUnknownFunction{3085};
inline constexpr EngineErrorNumber kOrderNotInDistinct{3093};  ///< by a field that DISTINCT lacks
inline constexpr EngineErrorNumber kAggregateInWhere{3096};
inline constexpr EngineErrorNumber kNotInGroup{3122};     ///< neither grouped nor in an aggregate
inline constexpr EngineErrorNumber kRecordDeleted{3167};  ///< a record of an answer, removed since
inline constexpr EngineErrorNumber kUnionWidths{3307};    ///< different numbers of fields
inline constexpr EngineErrorNumber kTooComplex{3360};     ///< beyond the bounds of what can be run

}  // namespace velnor
