#include "core/positional_text.h"

#include <cmath>
#include <limits>

#include "core/text.h"
#include "platform/run_error.h"

namespace velnor {
namespace {

bool isLineEnd(QChar c)
{
    return c == u'\r' || c == u'\n';
}

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

}  // namespace

void PositionalReader::needMore() const
{
    if (atEnd())
        throw RunError(RunErrorNumber::ReadPastEnd, "Input past end of file");
}

void PositionalReader::skipBlanks()
{
    while (!atEnd() && isBlank(content_[at_]))
        ++at_;
}

bool PositionalReader::atSeparator() const
{
    return atEnd() || content_[at_] == u',' || isLineEnd(content_[at_]);
}

/// One comma or one line end, of one character or two.
void PositionalReader::skipSeparator()
{
    if (atEnd() || !atSeparator())
        return;
    const bool pair =
        content_[at_] == u'\r' && at_ + 1 < content_.size() && content_[at_ + 1] == u'\n';
    at_ += pair ? 2 : 1;
}

qint32 PositionalReader::number()
{
    needMore();
    skipBlanks();
    const qsizetype begin = at_;
    while (!atSeparator() && !isBlank(content_[at_]))
        ++at_;
    const double value = std::nearbyint(text::val(content_.mid(begin, at_ - begin)));
    skipBlanks();
    skipSeparator();
    using Limits = std::numeric_limits<qint32>;
    if (value < Limits::min() || value > Limits::max())
        throw RunError(RunErrorNumber::Overflow, "Overflow");
    return static_cast<qint32>(value);
}

QString PositionalReader::text()
{
    needMore();
    skipBlanks();
    const qsizetype begin = at_;
    while (!atSeparator())
        ++at_;
    const QString value = content_.mid(begin, at_ - begin);
    skipSeparator();
    return value;
}

void PositionalWriter::number(qint32 value)
{
    if (value >= 0)
        content_ += u' ';
    content_ += QString::number(value);
    content_ += u' ';
}

void PositionalWriter::endLine()
{
    content_ += QStringLiteral("\r\n");
}

void PositionalWriter::text(const QString& value)
{
    content_ += value;
    endLine();
}

}  // namespace velnor
