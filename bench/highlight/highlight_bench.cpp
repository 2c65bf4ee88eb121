// highlight-bench FILE [REPEAT]
//
// Times what the editor does on each pause in typing: parse the whole text
// with every extension, sort the lists, free them. Prints, like md4c-render,
//   pmh_parser <bytes> <seconds> <MB/s>         (best of REPEAT runs)
//   pmh_parser peak-heap <bytes> <times the input> elements <count>
// The peak heap is counted by this program's own operator new: the most
// memory the parser held at once during one parse, result included.

#include "highlight/pmh_parser/pmh_parser.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <new>
#include <string>

namespace {
size_t g_live = 0;
size_t g_peak = 0;

void *countedAlloc(size_t size)
{
    void *p = std::malloc(size ? size : 1);
    if (!p)
        throw std::bad_alloc();
    g_live += malloc_usable_size(p);
    g_peak = std::max(g_peak, g_live);
    return p;
}

void countedFree(void *p) noexcept
{
    if (!p)
        return;
    g_live -= malloc_usable_size(p);
    std::free(p);
}
} // namespace

void *operator new(size_t size) { return countedAlloc(size); }
void *operator new[](size_t size) { return countedAlloc(size); }
void *operator new(size_t size, const std::nothrow_t &) noexcept
{
    try {
        return countedAlloc(size);
    } catch (...) {
        return nullptr;
    }
}
void *operator new[](size_t size, const std::nothrow_t &t) noexcept { return operator new(size, t); }
void operator delete(void *p) noexcept { countedFree(p); }
void operator delete[](void *p) noexcept { countedFree(p); }
void operator delete(void *p, size_t) noexcept { countedFree(p); }
void operator delete[](void *p, size_t) noexcept { countedFree(p); }

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: highlight-bench FILE [REPEAT]\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const int repeat = argc > 2 ? std::max(1, std::atoi(argv[2])) : 1;

    // One parse for the memory figures.
    const size_t before = g_live;
    g_peak = g_live;
    pmh_element **lists = nullptr;
    pmh_markdown_to_elements(text.c_str(), pmh_EXT_ALL, &lists);
    pmh_sort_elements_by_pos(lists);
    size_t elements = 0;
    for (const pmh_element *e = lists[pmh_ALL]; e; e = e->all_next)
        ++elements;
    pmh_free_elements(lists);
    const size_t peak = g_peak - before;

    double best = 1e30;
    for (int i = 0; i < repeat; ++i) {
        const auto t0 = std::chrono::steady_clock::now();
        pmh_markdown_to_elements(text.c_str(), pmh_EXT_ALL, &lists);
        pmh_sort_elements_by_pos(lists);
        pmh_free_elements(lists);
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
    }
    std::printf("pmh_parser %zu %.6f %.1f\n", text.size(), best, double(text.size()) / 1e6 / best);
    std::printf("pmh_parser peak-heap %zu %.2f elements %zu\n", peak, double(peak) / double(text.size()), elements);
    return 0;
}
