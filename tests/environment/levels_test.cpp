// What the reference says of each function on processor levels, in docs/levels.txt, held against random calls in every
// slot: a text that begins with "The same" is one of functions with the same bytes and status in all of them; under
// every other text there is a function with a call whose bytes or status differ.
#include <fnmatch.h>

#include <algorithm>
#include <deque>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "calls/random_bytes.h"
#include "calls/shapes.h"
#include "support/slots.h"

namespace {

struct Rule {
    std::vector<std::string> patterns;
    std::string text;
    bool same() const { return text.starts_with("The same"); }
};

std::vector<Rule> readRules()
{
    std::vector<Rule> rules;
    std::ifstream file(QVR_LEVELS);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string word;
        if (line.empty() || line[0] == '#')
            continue;
        if (line[0] == ' ') {
            while (words >> word)
                rules.back().text += (rules.back().text.empty() ? "" : " ") + word;
            continue;
        }
        rules.emplace_back();
        while (words >> word)
            rules.back().patterns.push_back(word);
    }
    return rules;
}

std::deque<std::vector<char>> blocks;
std::string seen; // of the call under way: its status and the arrays that it may write
bool watched;     // or all arrays, where a whole family is called and not this function

template<class T> void look(T) {}
template<class T> void look(T* p)
{
    if constexpr (!std::is_const_v<T>)
        for (const std::vector<char>& b : blocks)
            if (const void* at = p; at >= b.data() && at < b.data() + b.size())
                seen.append(b.begin(), b.end());
}

// The function, and a look at its arrays afterwards, but for a work buffer behind all else.
template<auto F, bool Work> struct Watched;
template<bool Work, class... A, qvrStatus (*F)(A...)> struct Watched<F, Work> {
    static qvrStatus call(A... arguments)
    {
        watched = true;
        const qvrStatus status = F(arguments...);
        seen += std::to_string(status) + ";";
        size_t left = sizeof...(A);
        ((--left || !Work ? look(arguments) : void()), ...);
        return status;
    }
};

struct Export {
    std::string name;
    void (*call)(calls::Input&);
};
template<class Name, auto F, bool Work> void callWatched(calls::Input& in)
{
    if constexpr (requires { &Watched<F, Work>::call; })
        calls::Shape<Name>::call(&Watched<F, Work>::call, in);
}
constexpr bool hasWork(std::string_view name)
{
    return name.find("ResizeSqrPixel") != name.npos;
}
const Export kExports[] = {
#define QVR_SHARED(name) {#name, &callWatched<calls::name, &Morven_##name, hasWork(#name)>},
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"
};

TEST(Levels, AreAsTheReferenceSays)
{
    const std::vector<Rule> rules = readRules();
    ASSERT_FALSE(rules.empty());
    std::set<const Rule*> differing;
    const int32_t chosen = qvrCpuIndex;
    uint64_t random = 7;
    std::vector<uint8_t> bytes(3000);
    for (const Export& e : kExports) {
        const auto rule = std::find_if(rules.begin(), rules.end(), [&](const Rule& r) {
            return std::any_of(r.patterns.begin(), r.patterns.end(),
                               [&](const std::string& p) { return !fnmatch(p.c_str(), e.name.c_str(), 0); });
        });
        ASSERT_NE(rule, rules.end()) << e.name;
        bool reported = false;
        for (int k = 0; k < 300 && !reported; k++) {
            calls::fillRandom(bytes.data(), bytes.size(), random);
            const calls::Data data = k % 2 ? calls::Data::ordinary : calls::Data::hostile;
            std::map<std::string, std::string> slotsOf;
            for (int slot = 0; slot < slots::kCount; slot++) {
                if (!slots::canRun(slot))
                    continue;
                qvrCpuIndex = slot;
                blocks.clear();
                seen.clear();
                watched = false;
                calls::Input in(bytes.data(), bytes.size(), data, [](size_t n, size_t offset) {
                    blocks.emplace_back(n + offset + 1);
                    return blocks.back().data() + offset;
                });
                in.inPlace = e.name.ends_with("_I") || e.name.ends_with("_ISfs") || e.name.ends_with("IRSfs");
                e.call(in);
                if (!watched)
                    for (const std::vector<char>& b : blocks)
                        seen.append(b.begin(), b.end());
                slotsOf[seen] += std::string(" ") + slots::kNames[slot];
            }
            if (slotsOf.size() < 2)
                continue;
            differing.insert(&*rule);
            if (rule->same() && watched) {
                std::string groups;
                for (const auto& [bits, names] : slotsOf)
                    groups += " |" + names;
                ADD_FAILURE() << e.name << " differs, call " << k << ":" << groups;
                reported = true;
            }
        }
    }
    qvrCpuIndex = chosen;
    for (const Rule& r : rules)
        EXPECT_TRUE(r.same() || differing.count(&r)) << r.patterns.front() << " differs nowhere: " << r.text;
}

} // namespace
