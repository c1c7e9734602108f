// What an error says to people. Any thread.
#pragma once

#include <QString>

#include <exception>

namespace stillwick {

/// The error's French sentence: an AppError's or a ProjectError's own, a platform layer's, or one
/// for what nobody foresaw.
[[nodiscard]] QString localizedDescription(const std::exception& error);

/// What is said of a project that could not be opened, or saved.
[[nodiscard]] QString openingFailed(const std::exception& error);
[[nodiscard]] QString savingFailed(const std::exception& error);

} // namespace stillwick
