// A way of moving through a film from picture to picture. One thread at a time.
#pragma once

namespace stillwick::benchmarks {

/// Each call returns when the new picture is ready for painting, and gives how long that took in
/// milliseconds. *Errors*: std::runtime_error where no picture comes.
class Stepper {
public:
    Stepper() = default;
    virtual ~Stepper() = default;
    Stepper(const Stepper&) = delete;
    Stepper& operator=(const Stepper&) = delete;

    /// Exactly to the frame shown at so many seconds.
    virtual double seek(double seconds) = 0;
    virtual double stepBack() = 0;
    virtual double stepOn() = 0;
    /// Lets whatever it does ahead of requests come to its end.
    virtual void rest(int milliseconds) = 0;
};

} // namespace stillwick::benchmarks
