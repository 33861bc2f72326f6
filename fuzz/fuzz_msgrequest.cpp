// The packed message requests: any text is split into style, countdown and the text to show,
// whose line breaks are all CR LF.
#include "fuzzsupport.h"

#include "lib/msgboxrequest.h"

using namespace quillet;

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    const QString request = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const MsgBoxRequest parsed = MsgBoxRequest::parse(request);
    const QString &text = parsed.text();
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('\n'))
            fuzz::check(i > 0 && text.at(i - 1) == QLatin1Char('\r'), "every line feed follows a carriage return");
    }
    fuzz::check(!text.contains(QLatin1Char('@')), "every \"@\" became a line break or was cut with the tag");
    for (int width : {1, 7, 60})
        fuzz::check(MsgBoxRequest::lineCount(text, width) >= 1, "at least one line");
    return 0;
}

QUILLET_FUZZ_TARGET
