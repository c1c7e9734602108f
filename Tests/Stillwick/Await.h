// Waiting for a task in a test, exceptions included.
#pragma once

#include <QCoroTask>

#include <exception>
#include <optional>

namespace stillwick::testing {

namespace detail {

template <typename T>
QCoro::Task<> settle(QCoro::Task<T> task, std::optional<T>& result, std::exception_ptr& error) {
    try {
        result = co_await task;
    } catch (...) {
        error = std::current_exception();
    }
}

} // namespace detail

/// What the task gives or throws; runs the event loop meanwhile. QCoro 0.8's own waitFor never
/// returns from a task that throws.
template <typename T>
T await(QCoro::Task<T> task) {
    std::optional<T> result;
    std::exception_ptr error;
    QCoro::waitFor(detail::settle(std::move(task), result, error));
    if (error)
        std::rethrow_exception(error);
    return std::move(*result);
}

} // namespace stillwick::testing
