#pragma once

#include <QString>

namespace quillet {

// A message-box request as the message box reads it: the packed string of lib_ShowMessage split
// into its style, its countdown and the text as it is to be shown. Pure text work, so that what
// a box shows can be checked without a window.
class MsgBoxRequest
{
public:
    // Reads a packed request: character 1 the style digit, characters 2-5 the countdown
    // (right-aligned, blank-padded; blanks mean none), the text from character 6. A style or
    // countdown that is not a number reads as 0, as a numeric prefix would.
    static MsgBoxRequest parse(const QString &request);

    // The text with a trailing "@" tag cut off, every "@" turned into a line break and every bare
    // line feed into CR LF. The result's line breaks are all CR LF.
    static QString displayText(const QString &text);
    // The tag cut alone: when the text ends in a run made only of digits, blanks, "@", CR and LF
    // and that run holds an "@", the text ends just before the run's first "@".
    static QString cutTrailingTag(const QString &text);
    // "@" and bare LF become CR LF; a CR LF pair stays as it is.
    static QString normaliseLineBreaks(const QString &text);
    // Lines a text of CR LF breaks takes in a box of charsPerLine characters: one per line, plus
    // one for each further charsPerLine characters of a line that runs over. At least 1.
    static int lineCount(const QString &text, int charsPerLine);

    int style() const { return m_style; }
    int countdown() const { return m_countdown; }
    // The text to show (displayText of the request's text).
    const QString &text() const { return m_text; }

    // Yes/No questions are styles 4 (Yes is the default) and 5 (No is the default).
    bool isQuestion() const { return m_style == 4 || m_style == 5; }

private:
    int m_style = 0;
    int m_countdown = 0;
    QString m_text;
};

} // namespace quillet
