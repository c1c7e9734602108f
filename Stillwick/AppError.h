// The application's own error. Plain value, any thread.
#pragma once

#include <QByteArray>
#include <QException>
#include <QString>

namespace stillwick {

/// Why an operation of the application failed, in words for the user.
class AppError final : public QException {
public:
    enum class Case {
        frameExtractionFailed,
        exportFailed,
        noVideoLoaded,
        noOutputFolder,
        subjectLiftingUnavailable,
        noSubjectFound,
    };

    [[nodiscard]] static AppError frameExtractionFailed(QString detail);
    [[nodiscard]] static AppError exportFailed(QString detail);
    [[nodiscard]] static AppError noVideoLoaded();
    [[nodiscard]] static AppError noOutputFolder();
    [[nodiscard]] static AppError subjectLiftingUnavailable();
    [[nodiscard]] static AppError noSubjectFound();

    /// What failed. Not named after the field because `case` is a word of the language.
    [[nodiscard]] Case kind() const noexcept { return m_case; }
    /// What the two failures add to their description; empty for the other cases.
    [[nodiscard]] const QString& detail() const noexcept { return m_detail; }
    /// What the user sees.
    [[nodiscard]] QString description() const;

    /// The description in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }
    [[nodiscard]] AppError* clone() const override { return new AppError(*this); }
    void raise() const override { throw AppError(*this); }

private:
    explicit AppError(Case kind, QString detail = {});

    Case m_case;
    QString m_detail;
    QByteArray m_what;
};

/// Whether case and detail are the same.
[[nodiscard]] bool operator==(const AppError& a, const AppError& b) noexcept;

} // namespace stillwick
