// core/positional_text.h - the form of a settings file: values one after another, without keys,
// known by their place alone. Plain text work, no file.
//
// Values are separated by commas, blanks and line ends; a text runs to the next comma or line end.
// So a text that holds a comma is cut there, and its rest is the next value: required.
#pragma once

#include <QString>

namespace velnor {

/// Takes value after value. Beyond the last one: error 62. The text must live as long.
class PositionalReader {
public:
    explicit PositionalReader(const QString& content) : content_(content) {}

    /// A whole number; what is none, and an empty place, is 0. Beyond 32 bits: error 6.
    qint32 number();
    QString text();
    bool atEnd() const { return at_ >= content_.size(); }

private:
    void needMore() const;
    void skipBlanks();
    bool atSeparator() const;
    void skipSeparator();

    const QString& content_;
    qsizetype at_ = 0;
};

/// Puts value after value: numbers share a line, a text has one of its own.
class PositionalWriter {
public:
    /// A blank or a minus sign in front, a blank behind.
    void number(qint32 value);
    void endLine();
    void text(const QString& value);
    const QString& content() const { return content_; }

private:
    QString content_;
};

}  // namespace velnor
