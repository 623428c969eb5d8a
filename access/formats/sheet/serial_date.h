// access/formats/sheet/serial_date.h - day counts of spreadsheets and Date values of the engine.
//
// The 1900 system: serial 1 is 1900-01-01 and serial 60 a day that never was, 1900-02-29, so that
// from 61 on the serial is the count since 1899-12-30, which is a Date value. Below 1 it is a time
// without a day. The 1904 system: serial 0 is 1904-01-01.
#pragma once

#include <optional>

namespace velnor::sheet {

/// The Date value of a serial, to the whole second; nothing for what is no date: below 0, or behind
/// 9999-12-31. Serial 60 of the 1900 system is 1900-02-28.
std::optional<double> dateOfSerial(double serial, bool date1904);
/// The serial of a Date value; nothing for days that the system does not have.
std::optional<double> serialOfDate(double date, bool date1904);

}  // namespace velnor::sheet
