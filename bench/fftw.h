#pragma once

#include <fftw3.h>

#include <algorithm>

namespace halvern {

/// FFTW's real transforms of n values, out of place, each on its own plan.
class Fftw {
public:
    explicit Fftw(int n) : real_(fftw_alloc_real(n)), complex_(fftw_alloc_complex(n / 2 + 1)) {
        forward_ = fftw_plan_dft_r2c_1d(n, real_, complex_, FFTW_MEASURE);
        inverse_ = fftw_plan_dft_c2r_1d(n, complex_, real_, FFTW_MEASURE);
        std::fill(real_, real_ + n, 0.0);
    }
    Fftw(const Fftw&) = delete;
    Fftw& operator=(const Fftw&) = delete;
    ~Fftw() {
        fftw_destroy_plan(forward_);
        fftw_destroy_plan(inverse_);
        fftw_free(real_);
        fftw_free(complex_);
    }

    void forward() { fftw_execute(forward_); }
    void inverse() { fftw_execute(inverse_); }

private:
    double* real_;
    fftw_complex* complex_;
    fftw_plan forward_;
    fftw_plan inverse_;
};

}  // namespace halvern
