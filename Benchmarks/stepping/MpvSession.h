// mpv without a window or sound, paused on a film, driven over its socket. One thread at a time.
#pragma once

#include "Stepper.h"

#include <QString>

#include <memory>

namespace stillwick::benchmarks {

/// *Errors*: std::runtime_error where mpv does not start or does not answer.
[[nodiscard]] std::unique_ptr<Stepper> makeMpvSession(const QString& film);

} // namespace stillwick::benchmarks
