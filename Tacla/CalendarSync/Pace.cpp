#include "Tacla/CalendarSync/Pace.h"

#include <algorithm>

namespace tacla {

namespace {

constexpr double atOnce = 200, perSecond = 6;
constexpr std::chrono::seconds longestBackoff{64}, longestRetryAfter{300};

}

Pace::Wait Pace::beforeRun(Moment now) const {
    return std::chrono::ceil<Wait>(std::max(notBefore_ - now, Moment::duration::zero()));
}

Pace::Wait Pace::beforeRequest(Moment now) {
    const std::chrono::duration<double> passed = now - counted_;
    counted_ = now;
    allowance_ = std::min(allowance_ + passed.count() * perSecond, atOnce) - 1;
    return std::chrono::ceil<Wait>(std::chrono::duration<double>(std::max(-allowance_ / perSecond, 0.0)));
}

void Pace::refused(Moment now, std::optional<std::chrono::seconds> retryAfter) {
    notBefore_ = now + (retryAfter ? std::min(*retryAfter, longestRetryAfter) : backoff_);
    backoff_ = std::min(backoff_ * 2, longestBackoff);
}

void Pace::completed() { backoff_ = std::chrono::seconds(1); }

}
