#pragma once

#include <cfenv>

namespace kvx::zelvo {

/// Rounds to nearest while it lives, whatever mode the caller is in: std::from_chars and what is
/// computed for a file go by the mode of the thread, a file must not.
class nearest_rounding {
public:
    nearest_rounding() noexcept {
        if (mode_ != FE_TONEAREST) std::fesetround(FE_TONEAREST);
    }
    nearest_rounding(const nearest_rounding&) = delete;
    nearest_rounding& operator=(const nearest_rounding&) = delete;
    ~nearest_rounding() {
        if (mode_ != FE_TONEAREST) std::fesetround(mode_);
    }

private:
    const int mode_ = std::fegetround();
};

} // namespace kvx::zelvo
