// What the network says of a picture, in several looks. Internal to Vision. Pure function, any
// thread.
#pragma once

#include "Vision/ForegroundNetwork.h"

namespace stillwick {

/// The log odds of subject over a picture: a look at the whole, and closer looks at what it found.
/// Each look is also taken mirrored. Looks run side by side; the answer does not depend on it.
/// *Shape*: `pixels` RGBA, premultiplied; the result has `size`.
/// *Errors*: VisionError Cancelled soon after `stop`.
[[nodiscard]] cv::Mat1f networkOdds(const ForegroundNetwork& network, const cv::Mat4b& pixels,
                                    cv::Size size, const std::stop_token& stop);

} // namespace stillwick
