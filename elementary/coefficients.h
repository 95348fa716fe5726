// Polynomials, coefficients from the highest power down: what they are near, and the bits of their relative error.
// Made by coefficients.sollya.
// clang-format off
#pragma once

// atan(sqrt z) / sqrt z, sqrt z <= tan(pi/14): 13.9 bits
inline constexpr double kArcTangent11[] = {
    -0x1.4b0632p-2, 0x1.fff782p-1};

// the same: 27.1 bits
inline constexpr double kArcTangent21[] = {
    -0x1.0f118ep-3, 0x1.98f696p-3, -0x1.5554a4p-2, 0x1p0};

// the same: 33.9 bits
inline constexpr double kArcTangent24[] = {
    0x1.99f1cd49f6891p-4, -0x1.23911678f0c0ap-3, 0x1.9994dfab10fc8p-3, -0x1.5555516c98d19p-2,
    0x1.ffffffff7b489p-1};

// the same: 66.1 bits
inline constexpr double kArcTangentFine[] = {
    -0x1.574c5165bb216p-5, 0x1.d8c0260d28584p-5, -0x1.10cc96750417cp-4, 0x1.3b1143160c0c4p-4,
    -0x1.745d09af81c5dp-4, 0x1.c71c71998689ap-4, -0x1.2492492467a3bp-3, 0x1.999999999973bp-3,
    -0x1.5555555555555p-2, 0x1p0};

// (atan(sqrt z) / sqrt z - 1) / z, z <= 1: 28.5 bits
inline constexpr double kUnitArcTangent[] = {
    -0x1.d5a1aap-10, 0x1.6551e2p-7, -0x1.fe7d24p-6, 0x1.da9c2ep-5,
    -0x1.5825f2p-4, 0x1.c0946cp-4, -0x1.24211ap-3, 0x1.9991ecp-3,
    -0x1.55553ep-2};

// asin(sqrt z) / sqrt z, z <= 1/4: 14.9 bits
inline constexpr double kArcSine11[] = {
    0x1.892de2p-4, 0x1.50f944p-3, 0x1.00020ap0};

// the same less 1, over z: 23.4 bits
inline constexpr double kArcSine21[] = {
    0x1.993a88p-5, 0x1.47f5c4p-5, 0x1.34dc56p-4, 0x1.554fa2p-3};

// the same whole: 31.8 bits
inline constexpr double kArcSine24[] = {
    0x1.365bebfc30b85p-5, 0x1.cf525c06405c2p-7, 0x1.0554db2c5afb7p-5, 0x1.6c91bbfc2f8d3p-5,
    0x1.333988d6167e9p-4, 0x1.55554848e3912p-3, 0x1.0000000117f17p0};

// sinh(sqrt z) / sqrt z, sqrt z <= ln 2 / 2: 15.5 bits
inline constexpr double kHyperbolicSine11[] = {
    0x1.570878p-3, 0x1p0};

// the same: 26.1 bits
inline constexpr double kHyperbolicSine21[] = {
    0x1.12279p-7, 0x1.5554bp-3, 0x1p0};

// the same: 37.7 bits
inline constexpr double kHyperbolicSine24[] = {
    0x1.a17d8772656f6p-13, 0x1.1110a66f96627p-7, 0x1.5555557e396c7p-3, 0x1.fffffffff6379p-1};

// cosh(sqrt z), sqrt z <= ln 2 / 2: 13.2 bits
inline constexpr double kHyperbolicCosine11[] = {
    0x1.021ea6p-1, 0x1p0};

// the same: 33.2 bits
inline constexpr double kHyperbolicCosine21[] = {
    0x1.6d4fp-10, 0x1.5554e6p-5, 0x1p-1, 0x1p0};

// the same: 45.9 bits
inline constexpr double kHyperbolicCosine24[] = {
    0x1.a174062276609p-16, 0x1.6c163630491cdp-10, 0x1.555555816d9fdp-5, 0x1.ffffffffeeac7p-2,
    0x1p0};

// log2(1 + u) / u, 1 + u from sqrt(1/2) to sqrt 2: 22.2 bits
inline constexpr double kBinaryLogarithm11[] = {
    -0x1.2d5ff2p-3, 0x1.e0c364p-3, -0x1.fd588ep-3, 0x1.25dfd4p-2,
    -0x1.70e424p-2, 0x1.ec787ep-2, -0x1.715526p-1, 0x1.715474p0};

// 2^f, f <= 1: 13.5 bits
inline constexpr double kBinaryPower11[] = {
    0x1.3baa94p-4, 0x1.d23796p-3, 0x1.63e658p-1, 0x1p0};

// (ln(1 + r) - r) / r^2, |r| <= 2^-7.9: 27.6 bits
inline constexpr double kLogarithm21[] = {
    0x1.55561cp-2, -0x1.00006ep-1};

// ln(1 + r) / r, |r| <= 2^-7.9: 36.4 bits
inline constexpr double kLogarithmFine[] = {
    -0x1.0000d056486ap-2, 0x1.55561839ccec9p-2, -0x1.ffffffffdab31p-2, 0x1p0};

// (e^r - 1 - r) / r^2, |r| <= ln 2 / 2: 28.1 bits
inline constexpr double kExponential[] = {
    0x1.694c86p-10, 0x1.12397cp-7, 0x1.555a26p-5, 0x1.555492p-3,
    0x1.fffffap-2};
