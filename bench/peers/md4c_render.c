/* md4c-render FILE [REPEAT]
 *
 * Parses and renders FILE to HTML with md4c (GitHub dialect) REPEAT times
 * (default 1) and prints one line: "md4c <bytes> <seconds> <MB/s>", the time
 * being the best of the repeats. The HTML goes to a counting sink, so output
 * costs no I/O. A small peer for the parser and highlighter benchmarks. */
#include <md4c-html.h>

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static void sink(const MD_CHAR *text, MD_SIZE size, void *userdata)
{
    (void)text;
    *(size_t *)userdata += size;
}

static double now(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (double)ts.tv_sec + (double)ts.tv_nsec / 1e9;
}

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: md4c-render FILE [REPEAT]\n");
        return 2;
    }
    FILE *f = fopen(argv[1], "rb");
    if (!f) {
        perror(argv[1]);
        return 1;
    }
    fseek(f, 0, SEEK_END);
    long size = ftell(f);
    fseek(f, 0, SEEK_SET);
    char *data = malloc((size_t)size + 1);
    if (!data || fread(data, 1, (size_t)size, f) != (size_t)size) {
        fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    fclose(f);
    int repeat = argc > 2 ? atoi(argv[2]) : 1;
    if (repeat < 1)
        repeat = 1;
    double best = 1e30;
    size_t out = 0;
    for (int i = 0; i < repeat; ++i) {
        out = 0;
        double t0 = now();
        md_html(data, (MD_SIZE)size, sink, &out, MD_DIALECT_GITHUB, 0);
        double t = now() - t0;
        if (t < best)
            best = t;
    }
    printf("md4c %ld %.6f %.1f\n", size, best, (double)size / 1e6 / best);
    free(data);
    return out > 0 ? 0 : 1;
}
