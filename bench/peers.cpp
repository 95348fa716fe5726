#include "bench/peers.h"

#include <string.h>

namespace bench {

// Per family a table of plain loops for each level, and perhaps one of Eigen.
#define QVR_PLAIN_TABLES(family)                                                                                       \
    extern const PeerFunction plain_##family##_mx[], plain_##family##_m7[], plain_##family##_u8[],                     \
        plain_##family##_n8[], plain_##family##_y8[], plain_##family##_e9[], plain_##family##_l9[];
QVR_PLAIN_TABLES(vector)
QVR_PLAIN_TABLES(filters)
QVR_PLAIN_TABLES(fourier)
QVR_PLAIN_TABLES(elementary)
QVR_PLAIN_TABLES(image)

#define QVR_PLAIN_ROW(family)                                                                                          \
    {plain_##family##_mx, plain_##family##_m7, plain_##family##_u8, plain_##family##_n8,                               \
     plain_##family##_y8, plain_##family##_e9, plain_##family##_l9}

namespace {
const PeerFunction* const kPlain[][7] = {QVR_PLAIN_ROW(vector), QVR_PLAIN_ROW(filters), QVR_PLAIN_ROW(fourier),
                                         QVR_PLAIN_ROW(elementary), QVR_PLAIN_ROW(image)};
} // namespace

#ifdef QVR_HAVE_EIGEN
extern const PeerFunction eigen_vector[], eigen_vector_fixed[];
namespace {
const PeerFunction* const kEigen[] = {eigen_vector, eigen_vector_fixed};
} // namespace
#else
namespace {
const PeerFunction kNone[] = {{nullptr, nullptr}};
const PeerFunction* const kEigen[] = {kNone};
} // namespace
#endif

namespace {

constexpr int kWidest = 6;

void (*find(const PeerFunction* table, const std::string& name))()
{
    for (; table->name != nullptr; table++)
        if (name == table->name)
            return table->function;
    return nullptr;
}

} // namespace

int chosenSlot = -1;

void (*findPlain(const std::string& name))()
{
    for (const auto& family : kPlain)
        if (auto* const function = find(family[qvrCpuIndex], name))
            return function;
    return nullptr;
}

void (*findEigen(const std::string& name))()
{
    if (qvrCpuIndex != kWidest)
        return nullptr;
    for (const PeerFunction* table : kEigen)
        if (auto* const function = find(table, name))
            return function;
    return nullptr;
}

bool ownSlot()
{
    return qvrCpuIndex == chosenSlot;
}

void visitPeerFunctions(const std::function<void(const char*, const char*)>& visit)
{
    const auto table = [&](const char* peer, const PeerFunction* entry) {
        for (; entry->name != nullptr; entry++)
            visit(peer, entry->name);
    };
    for (const auto& family : kPlain)
        table("plain loop", family[0]);
    for (const PeerFunction* entries : kEigen)
        table("Eigen", entries);
}

} // namespace bench
