// access/formats/excel/decrypt.h - workbooks that are encrypted with a password: 40-bit RC4.
//
// Record heads stay plain, and so do BOF, FILEPASS and a few records more; the key stream runs on
// through all of it, in blocks of 1024 bytes with a key each.
#pragma once

#include <string_view>
#include <vector>

#include "access/formats/excel/biff_record.h"

namespace velnor::excel {

enum class Unlocking { NotEncrypted, Done, WrongPassword, UnknownMethod };

/// Decrypts a workbook stream in place, with `password` or, when that is empty, with the well-known
/// password of workbooks that are only protected against changes.
Unlocking unlock(std::vector<std::uint8_t>& stream, std::string_view password);

}  // namespace velnor::excel
