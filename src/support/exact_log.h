// Logarithm and exponential with the same bits on every processor: made of +, -, *, / and exact scaling only.
#pragma once

namespace weld {

// Natural logarithm within 2e-15 relative to max(1, |log|); minus infinity for 0, NaN for less and for NaN.
double exactLog(double x);

// e^x within 1e-14 relative; 0 below -708, infinity above 709, NaN for NaN.
double exactExp(double x);

}  // namespace weld
