#pragma once

// A growable array of pointers, used by the parser for its pools of work
// buffers. The stack does not own what its items point to.

#include <cstddef>

struct hoedown_stack {
    void **item;
    size_t size;  // items in use
    size_t asize; // slots allocated (slots past size keep their old pointers)
};

void hoedown_stack_init(hoedown_stack *st, size_t initial_size);
void hoedown_stack_uninit(hoedown_stack *st);
// Makes room for at least `neosz` items; new slots are null.
void hoedown_stack_grow(hoedown_stack *st, size_t neosz);
void hoedown_stack_push(hoedown_stack *st, void *item);
// The last item, removed; null when empty.
void *hoedown_stack_pop(hoedown_stack *st);
// The last item, or null when empty.
void *hoedown_stack_top(const hoedown_stack *st);
