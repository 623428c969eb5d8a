// windows/child_geometry.h - sizes and places of child windows, in twips.
#pragma once

#include <QString>

namespace velnor {

inline constexpr int kChildHeight = 5000;
inline constexpr int kChildWidth = 6300;
inline constexpr int kWidestColumn = 2500;
inline constexpr int kCascadeLeft = 200;
inline constexpr int kCascadeTop = 150;

/// The width of a grid's column for a field of this size under a name of this length.
int browserColumnWidth(int nameLength, int fieldSize);

/// "CUSTOMER.DBF - Position: 50%  of 3 Records".
QString positionText(const QString& fileName, double percent, long long records);

}  // namespace velnor
