#include "access/sql/functions.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>

#include "access/sql/text_order.h"

namespace velnor::sql {
namespace {

using enum ResultRule;

constexpr std::array kFunctions{
    // over the records of a group
    FunctionDef{"AVG", "n", 1, Real, "v_avg", true},
    FunctionDef{"COUNT", "a", 1, Integer, "COUNT", true},
    FunctionDef{"FIRST", "a", 1, OfFirst, "v_first", true},
    FunctionDef{"LAST", "a", 1, OfFirst, "v_last", true},
    FunctionDef{"MAX", "a", 1, OfFirst, "MAX", true},
    FunctionDef{"MIN", "a", 1, OfFirst, "MIN", true},
    FunctionDef{"STDEV", "n", 1, Real, "v_stdev", true},
    FunctionDef{"STDEVP", "n", 1, Real, "v_stdevp", true},
    FunctionDef{"SUM", "n", 1, OfNumber, "v_sum", true},
    FunctionDef{"VAR", "n", 1, Real, "v_var", true},
    FunctionDef{"VARP", "n", 1, Real, "v_varp", true},
    // texts
    FunctionDef{"ASC", "t", 1, Integer, "v_asc"},
    FunctionDef{"CHR", "n", 1, Text, "v_chr"},
    FunctionDef{"CSTR", "t", 1, Text, "v_cstr"},
    FunctionDef{"FORMAT", "at", 1, Text, "v_format"},
    FunctionDef{"INSTR", "aaaa", 2, Integer, "v_instr"},
    FunctionDef{"LCASE", "t", 1, Text, "v_lcase"},
    FunctionDef{"LEFT", "tn", 2, Text, "v_left"},
    FunctionDef{"LEN", "t", 1, Integer, "v_len"},
    FunctionDef{"LENGTH", "t", 1, Integer, "v_len"},
    FunctionDef{"LOWER", "t", 1, Text, "v_lcase"},
    FunctionDef{"LTRIM", "t", 1, Text, "v_ltrim"},
    FunctionDef{"MID", "tnn", 2, Text, "v_mid"},
    FunctionDef{"REPLACE", "ttt", 3, Text, "v_replace"},
    FunctionDef{"RIGHT", "tn", 2, Text, "v_right"},
    FunctionDef{"RTRIM", "t", 1, Text, "v_rtrim"},
    FunctionDef{"SPACE", "n", 1, Text, "v_space"},
    FunctionDef{"STR", "n", 1, Text, "v_str"},
    FunctionDef{"STRCOMP", "ttn", 2, Integer, "v_strcomp"},
    FunctionDef{"STRING", "nt", 2, Text, "v_string"},
    FunctionDef{"STRREVERSE", "t", 1, Text, "v_reverse"},
    FunctionDef{"SUBSTR", "tnn", 2, Text, "v_mid"},
    FunctionDef{"SUBSTRING", "tnn", 2, Text, "v_mid"},
    FunctionDef{"TRIM", "t", 1, Text, "v_trim"},
    FunctionDef{"UCASE", "t", 1, Text, "v_ucase"},
    FunctionDef{"UPPER", "t", 1, Text, "v_ucase"},
    FunctionDef{"VAL", "t", 1, Real, "v_val"},
    // numbers
    FunctionDef{"ABS", "n", 1, OfNumber, "v_abs"},
    FunctionDef{"ATN", "n", 1, Real, "v_atn"},
    FunctionDef{"CBOOL", "n", 1, Boolean, "v_cbool"},
    FunctionDef{"CBYTE", "n", 1, Integer, "v_cbyte"},
    FunctionDef{"CCUR", "n", 1, Currency, "v_ccur"},
    FunctionDef{"CDBL", "n", 1, Real, "v_cdbl"},
    FunctionDef{"CDEC", "n", 1, Real, "v_cdbl"},
    FunctionDef{"CINT", "n", 1, Integer, "v_cint"},
    FunctionDef{"CLNG", "n", 1, Integer, "v_clng"},
    FunctionDef{"COS", "n", 1, Real, "v_cos"},
    FunctionDef{"CSNG", "n", 1, Real, "v_csng"},
    FunctionDef{"EXP", "n", 1, Real, "v_exp"},
    FunctionDef{"FIX", "n", 1, OfNumber, "v_fix"},
    FunctionDef{"INT", "n", 1, OfNumber, "v_int"},
    FunctionDef{"ISNUMERIC", "a", 1, Boolean, "v_isnumeric"},
    FunctionDef{"LOG", "n", 1, Real, "v_log"},
    FunctionDef{"ROUND", "nn", 1, OfNumber, "v_round"},
    FunctionDef{"SGN", "n", 1, Integer, "v_sgn"},
    FunctionDef{"SIN", "n", 1, Real, "v_sin"},
    FunctionDef{"SQR", "n", 1, Real, "v_sqr"},
    FunctionDef{"TAN", "n", 1, Real, "v_tan"},
    // dates
    FunctionDef{"CDATE", "d", 1, Date, "v_cdate"},
    FunctionDef{"DATE", "", 0, Date, "v_date"},
    FunctionDef{"DATEADD", "tnd", 3, Date, "v_dateadd"},
    FunctionDef{"DATEDIFF", "tdd", 3, Integer, "v_datediff"},
    FunctionDef{"DATEPART", "td", 2, Integer, "v_datepart"},
    FunctionDef{"DATESERIAL", "nnn", 3, Date, "v_dateserial"},
    FunctionDef{"DATEVALUE", "d", 1, Date, "v_int"},
    FunctionDef{"DAY", "d", 1, Integer, "v_day"},
    FunctionDef{"HOUR", "d", 1, Integer, "v_hour"},
    FunctionDef{"ISDATE", "a", 1, Boolean, "v_isdate"},
    FunctionDef{"MINUTE", "d", 1, Integer, "v_minute"},
    FunctionDef{"MONTH", "d", 1, Integer, "v_month"},
    FunctionDef{"MONTHNAME", "nn", 1, Text, "v_monthname"},
    FunctionDef{"NOW", "", 0, Date, "v_now"},
    FunctionDef{"SECOND", "d", 1, Integer, "v_second"},
    FunctionDef{"TIME", "", 0, Date, "v_time"},
    FunctionDef{"TIMESERIAL", "nnn", 3, Date, "v_timeserial"},
    FunctionDef{"TIMEVALUE", "d", 1, Date, "v_timevalue"},
    FunctionDef{"WEEKDAY", "d", 1, Integer, "v_weekday"},
    FunctionDef{"WEEKDAYNAME", "nn", 1, Text, "v_weekdayname"},
    FunctionDef{"YEAR", "d", 1, Integer, "v_year"},
    // Null
    FunctionDef{"COALESCE", "aaaaaaaa", 2, OfFirst, "COALESCE"},
    FunctionDef{"IFNULL", "aa", 2, OfFirst, "IFNULL"},
    FunctionDef{"ISNULL", "a", 1, Boolean, "v_isnull"},
    FunctionDef{"NZ", "aa", 1, OfFirst, "v_nz"},
};

int orderOfTexts(void*, int firstLength, const void* first, int secondLength, const void* second)
{
    return compareText({static_cast<const char*>(first), static_cast<std::size_t>(firstLength)},
                       {static_cast<const char*>(second), static_cast<std::size_t>(secondLength)});
}

}  // namespace

const FunctionDef* findFunction(std::string_view name)
{
    if (!name.empty() && name.back() == '$')  // Left$ and its kin
        name.remove_suffix(1);
    const auto found = std::find_if(kFunctions.begin(), kFunctions.end(),
                                    [&](const FunctionDef& f) { return f.name == name; });
    return found == kFunctions.end() ? nullptr : &*found;
}

void addFunctions(sqlite3* db)
{
    sqlite3_create_collation_v2(db, kTextOrder, SQLITE_UTF8, nullptr, orderOfTexts, nullptr);
    addTextFunctions(db);
    addNumberFunctions(db);
    addDateFunctions(db);
    addAggregates(db);
}

}  // namespace velnor::sql
