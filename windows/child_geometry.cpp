#include "windows/child_geometry.h"

namespace velnor {

using namespace Qt::StringLiterals;

int browserColumnWidth(int nameLength, int fieldSize)
{
    const int width = nameLength <= fieldSize ? fieldSize * 120 : nameLength * 100;
    if (width < 250)
        return 800;
    return width > kWidestColumn ? kWidestColumn : width;
}

QString positionText(const QString& fileName, double percent, long long records)
{
    // Seven digits, as single precision shows them.
    return u"%1 - Position: %2%  of %3 Records"_s.arg(
        fileName, QString::number(static_cast<float>(percent), 'g', 7), QString::number(records));
}

}  // namespace velnor
