// Checks that all peers agree, then times them. Started with --heap=FILE under the counting allocator it writes what
// each takes from the heap; started with --scaling it times the library on records of growing size.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <set>

#include "bench/harness/heap.h"
#include "bench/harness/peer.h"
#include "bench/harness/runner.h"
#include "bench/scaling/scaling.h"
#include "bench/values/values.h"

namespace bench {
namespace {

// Peers that give other octets or values than the library are named and end the program.
bool all_agree() {
    std::map<std::string, std::string> references;
    for (peer* p : peer::all())
        if (std::strcmp(p->name, library) == 0) references[p->workload] = p->reference();

    bool agree = true;
    std::map<std::string, std::set<std::string>> present;
    std::set<std::string> names;
    for (peer* p : peer::all()) {
        const std::string& reference = references[p->workload];
        const std::string wrong =
            p->accept({reinterpret_cast<const unsigned char*>(reference.data()), reference.size()});
        present[p->workload].insert(p->name);
        names.insert(p->name);
        if (wrong.empty()) continue;
        std::fprintf(stderr, "%s at %s %s\n", p->name, p->workload, wrong.c_str());
        agree = false;
    }
    for (const auto& [workload, here] : present)
        for (const std::string& name : names)
            if (here.count(name) == 0) std::fprintf(stderr, "%s is skipped at %s\n", name.c_str(), workload.c_str());
    return agree;
}

// A batch takes a tenth of a millisecond of the processor, so that looking at the clock does not count.
size_t batch_for(const timed_case& timed) {
    size_t times = 1;
    timed.prepare();
    timed.run(1);
    for (;; times *= 2) {
        const std::clock_t start = std::clock();
        timed.run(times);
        if (std::clock() - start > CLOCKS_PER_SEC / 10000) break;
    }
    timed.finish();
    return times;
}

std::vector<timed_case> cases_of_peers() {
    std::vector<timed_case> cases;
    for (peer* p : peer::all()) {
        const std::string name = std::string(p->workload) + "/" + p->name;
        const auto octets = static_cast<double>(p->encoded_length());
        cases.push_back({name + "/encode", octets, 1, [p] { p->prepare(); }, [p](size_t n) { p->encode(n); },
                         [p] { p->finish(); }});
        cases.push_back({name + "/decode", octets, 1, [] {}, [p](size_t n) { p->decode(n); }, [] {}});
    }
    return cases;
}

int write_heap_use(const std::vector<timed_case>& cases, const char* name) {
    auto* watch = reinterpret_cast<heap_watch*>(dlsym(RTLD_DEFAULT, heap_watch_name));
    if (watch == nullptr) {
        std::fprintf(stderr, "--heap needs the counting allocator: LD_PRELOAD it\n");
        return 1;
    }
    std::FILE* file = std::fopen(name, "w");
    if (file == nullptr) return 1;
    std::fprintf(file, "{");
    const char* separator = "";
    for (const timed_case& timed : cases) {
        timed.prepare();
        timed.run(1);
        heap_use use{};
        watch(nullptr);
        timed.run(1);
        watch(&use);
        timed.finish();
        std::fprintf(file, "%s\n\"%s\": {\"allocations\": %zu, \"peak\": %zu}", separator, timed.name.c_str(),
                     use.allocations, use.peak);
        separator = ",";
    }
    std::fprintf(file, "\n}\n");
    return std::fclose(file) == 0 ? 0 : 1;
}

int run(int argc, char** argv) {
    constexpr char heap_flag[] = "--heap=";
    const bool scaling = argc > 1 && std::strcmp(argv[1], "--scaling") == 0;
    if (!scaling && !all_agree()) return 1;
    std::vector<timed_case> cases = scaling ? scaling_cases() : cases_of_peers();
    if (argc == 2 && std::strncmp(argv[1], heap_flag, sizeof heap_flag - 1) == 0)
        return write_heap_use(cases, argv[1] + sizeof heap_flag - 1);
    if (!scaling) {
        for (auto& more : {type_code_cases(), other_form_cases(), conversion_cases()})
            cases.insert(cases.end(), more.begin(), more.end());
    }
    for (timed_case& timed : cases)
        timed.batch = batch_for(timed);
    if (!scaling) return time_cases(cases, argc, argv);
    argv[1] = argv[0];
    return time_cases(cases, argc - 1, argv + 1);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) { return bench::run(argc, argv); }
