// Each system call of a save failing in turn, by strace: the earlier project stays and the user is
// told, or the new one is there.
#include "../Strace.h"
#include "NumberedProject.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <map>
#include <vector>

namespace stillwick {
namespace {

using testing::loaded;
using testing::namesIn;
using testing::numbered;
using testing::saved;

/// A system call of a save, and which of its name it is in the whole program's run.
struct Call {
    QString name;
    int ordinal = 0;
};

struct Outcome {
    int status = -1; ///< −1 where the program did not come to its end
    std::string told;
};

class ProjectFaultTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(saved(numbered(1), path()), "ok");
        if (!testing::canTrace())
            GTEST_SKIP() << "strace cannot trace here";
    }

    std::string path() const { return m_folder.filePath(QStringLiteral("a")).toStdString(); }
    std::string names() const { return namesIn(m_folder.path().toStdString()); }

    /// Saves project 2 over project 1 under strace with these options.
    Outcome run(QStringList options) const {
        EXPECT_EQ(saved(numbered(1), path()), "ok");
        options << QStringLiteral("-f") << QStringLiteral("-o") << logPath()
                << QStringLiteral(PROJECT_SAVE) << QString::fromStdString(path())
                << QStringLiteral("2");
        const testing::Traced traced = testing::traced(options);
        return {traced.status, traced.output.trimmed().toStdString()};
    }

    /// The system calls of an undisturbed save, in order.
    std::vector<Call> callsOfASave() const {
        EXPECT_EQ(run({}).status, 0);
        QFile log(logPath());
        EXPECT_TRUE(log.open(QIODevice::ReadOnly));
        std::map<QByteArray, int> counts;
        std::vector<Call> calls;
        bool isSaving = false;
        for (QByteArray line = log.readLine(); !line.isEmpty(); line = log.readLine()) {
            const QByteArray name = line.mid(line.indexOf(' ')).trimmed().split('(').first();
            const int ordinal = ++counts[name];
            if (line.contains("the save ends"))
                break;
            if (isSaving && name != "brk") // which answers with an address, never with an error
                calls.push_back({QString::fromLatin1(name), ordinal});
            isSaving = isSaving || line.contains("the save begins");
        }
        return calls;
    }

    static QStringList injecting(const Call& call, const char* error, const char* from = "") {
        return {QStringLiteral("-e"), QStringLiteral("inject=%1:error=%2:when=%3%4")
                                          .arg(call.name, QLatin1StringView(error))
                                          .arg(call.ordinal)
                                          .arg(QLatin1StringView(from))};
    }

private:
    QString logPath() const { return m_logs.filePath(QStringLiteral("log")); }

    QTemporaryDir m_folder;
    QTemporaryDir m_logs;
};

TEST_F(ProjectFaultTest, WhicheverSystemCallFailsTheProjectIsWholeAndAFailureIsTold) {
    int failures = 0;
    bool isRenamed = false;
    for (const Call& call : callsOfASave()) {
        for (const char* error : {"EIO", "ENOSPC", "EACCES", "ENOMEM"})
            for (const char* from : {"", "+"}) { // once, or from then on
                const Outcome outcome = run(injecting(call, error, from));
                const std::string fault = call.name.toStdString() + ' ' + error + from;
                ASSERT_TRUE(outcome.status == 0 || outcome.status == 1) << fault;
                EXPECT_EQ(loaded(path()), outcome.status == 0 || isRenamed ? "2" : "1") << fault;
                EXPECT_EQ(names(), "a") << fault;
                failures += outcome.status;
                if (fault.starts_with("write") && fault.ends_with("+"))
                    continue; // words cannot be written either
                EXPECT_FALSE(outcome.told.empty()) << fault;
                EXPECT_EQ(outcome.status == 0, outcome.told == "ok") << fault;
            }
        isRenamed = isRenamed || call.name == QStringLiteral("rename");
    }
    EXPECT_TRUE(isRenamed);
    EXPECT_GT(failures, 50);
}

} // namespace
} // namespace stillwick
