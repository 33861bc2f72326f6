#include "scriptedprompt.h"

#include "lib/appstate.h"

#include <QTest>

namespace quillet::test {

ScriptedPrompt::ScriptedPrompt()
{
    setPrompt(this);
}

ScriptedPrompt::~ScriptedPrompt()
{
    setPrompt(nullptr);
}

QStringList ScriptedPrompt::texts() const
{
    QStringList out;
    for (const Message &m : m_messages)
        out << m.text;
    return out;
}

bool ScriptedPrompt::showMessage(const QString &request, bool answer)
{
    Message m;
    m.style = request.left(1).toInt();
    m.timeout = request.mid(1, 4).trimmed().toInt();
    m.text = request.mid(5);
    m_messages << m;
    if (m.style == 4 || m.style == 5) {
        if (m_answers.isEmpty()) {
            ++unexpectedQuestions;
            QTest::qFail(qPrintable(QStringLiteral("Unexpected question: ") + m.text), __FILE__, __LINE__);
            return answer;
        }
        return m_answers.dequeue();
    }
    return answer;
}

void ScriptedPrompt::progressShow(const QString &caption)
{
    progressCaptions << caption;
    progressVisible = true;
}

void ScriptedPrompt::progressInit(int count)
{
    progressMax = count;
    progressPositions.clear();
}

void ScriptedPrompt::progressUpdate(int position, int)
{
    progressPositions << position;
    if (cancelAtPosition > 0 && position >= cancelAtPosition)
        appState().cancel = true;
}

void ScriptedPrompt::progressHide()
{
    progressVisible = false;
}

QString ScriptedPrompt::browseForFolder(const QString &startDir, const QString &)
{
    browseStarts << startDir;
    return m_choices.isEmpty() ? QString() : m_choices.dequeue();
}

QString ScriptedPrompt::openFileDialog(const QString &, const QString &, const QString &, const QString &)
{
    return m_choices.isEmpty() ? QString() : m_choices.dequeue();
}

QString ScriptedPrompt::saveFileDialog(const QString &, const QString &, const QString &, const QString &)
{
    return m_choices.isEmpty() ? QString() : m_choices.dequeue();
}

QString ScriptedPrompt::typedText(const QString &, const QString &)
{
    return m_choices.isEmpty() ? QString() : m_choices.dequeue();
}

bool ScriptedPrompt::openWithDefaultProgram(const QString &path)
{
    opened << path;
    return openResult;
}

} // namespace quillet::test
