// Caller arrays as Eigen's array expressions.
#ifndef QVR_BENCH_VECTOR_EIGEN_H
#define QVR_BENCH_VECTOR_EIGEN_H

#include <Eigen/Core>

#include "bench/peers.h"

namespace {

template<class T> auto in(const T* p, int n)
{
    return Eigen::Map<const Eigen::Array<T, Eigen::Dynamic, 1>>(p, n);
}
template<class T> auto out(T* p, int n)
{
    return Eigen::Map<Eigen::Array<T, Eigen::Dynamic, 1>>(p, n);
}

} // namespace

#endif
