#include "access/formats/sheet/serial_date.h"

#include <cmath>

namespace velnor::sheet {
namespace {

constexpr double kSecondsOfDay = 86400;
constexpr double kDaysTo1904 = 1462;
constexpr double kPastLastDay = 2958466;  // behind 9999-12-31
constexpr double kLeapDay = 60;           // 1900-02-29, which never was

}  // namespace

std::optional<double> dateOfSerial(double serial, bool date1904)
{
    if (!(serial >= 0 && serial < kPastLastDay))
        return std::nullopt;
    if (date1904)
        serial += kDaysTo1904;
    else if (serial >= 1 && serial < kLeapDay)
        serial += 1;
    double day = std::floor(serial);
    double second = std::floor((serial - day) * kSecondsOfDay + 0.5);
    if (second >= kSecondsOfDay) {
        second = 0;
        day += 1;
    }
    if (day >= kPastLastDay)
        return std::nullopt;
    return day + second / kSecondsOfDay;
}

std::optional<double> serialOfDate(double date, bool date1904)
{
    if (!(date >= 0 && date < kPastLastDay))
        return std::nullopt;
    if (date1904)
        return date >= kDaysTo1904 ? std::optional(date - kDaysTo1904) : std::nullopt;
    if (date < 1 || date >= kLeapDay + 1)
        return date;
    return date >= 2 ? std::optional(date - 1) : std::nullopt;  // 1899-12-31 has no serial
}

}  // namespace velnor::sheet
