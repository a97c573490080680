/* The minimal program that `resolution` is compared with. It prints the same response from a sorted
 * array, with the C library alone. */

#include "csdk.h"

#include <stdio.h>
#include <stdlib.h>

/* Sizes as numbers in their order: the width, and in the lower 16 bits the height. */
struct sizes {
    unsigned int* items;
    size_t count;
    size_t capacity;
};

/* Keeps the array sorted and without duplicates. */
static void insert(struct sizes* sizes, unsigned int size) {
    size_t place = sizes->count;
    while (place > 0 && size < sizes->items[place - 1])
        --place;
    if (place > 0 && size == sizes->items[place - 1])
        return;
    if (sizes->count == sizes->capacity) {
        sizes->capacity = 2 * sizes->capacity + 16;
        sizes->items = realloc(sizes->items, sizes->capacity * sizeof size);
        if (!sizes->items)
            abort();
    }
    for (size_t i = sizes->count; i > place; --i)
        sizes->items[i] = sizes->items[i - 1];
    sizes->items[place] = size;
    ++sizes->count;
}

int main(void) {
    csdk_settings.flags &= (uint8_t)~CSDK_FLAGS_OPTION;
    csdk_settings.application_name = "Resolution";
    csdk_settings.vendor_name = "Zenthra, Inc.";
    csdk_settings.mode = 1;
    csdk_settings.option = 1;
    if (csdk_init() != 0)
        return 1;

    puts("Content-Type: text/plain\r\n\r");
    struct sizes sizes = {NULL, 0, 0};
    int width;
    int height;
    while (csdk_next_resolution(csdk.handle, &width, &height) == 0) {
        if ((unsigned int)width <= 320 && (unsigned int)height <= 200)
            insert(&sizes, (unsigned int)width << 16 | (unsigned int)height);
    }
    putchar('[');
    for (size_t i = 0; i < sizes.count; ++i) {
        if (i > 0)
            putchar(',');
        printf("{\"resolution\": \"%ux%u\", \"default\": %s }", sizes.items[i] >> 16,
               sizes.items[i] & 0xffff, i == 0 ? "true" : "false");
    }
    putchar(']');
    csdk_deinit();
    free(sizes.items);
    return 0;
}
