/* The minimal program that `resolution` is compared with. It prints the same response from a sorted
 * array, with the C library alone. */

#include "csdk.h"

#include <stdio.h>
#include <stdlib.h>

struct size {
    int width;
    int height;
};

struct sizes {
    struct size* items;
    size_t count;
    size_t capacity;
};

static int compare(struct size a, struct size b) {
    if (a.width != b.width)
        return a.width < b.width ? -1 : 1;
    if (a.height != b.height)
        return a.height < b.height ? -1 : 1;
    return 0;
}

/* Keeps the array sorted and without duplicates. */
static void insert(struct sizes* sizes, struct size size) {
    size_t place = sizes->count;
    while (place > 0 && compare(size, sizes->items[place - 1]) < 0)
        --place;
    if (place > 0 && compare(size, sizes->items[place - 1]) == 0)
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
    putchar('[');
    struct sizes sizes = {NULL, 0, 0};
    struct size size = {0, 0};
    while (csdk_next_resolution(csdk.handle, &size.width, &size.height) == 0) {
        if ((unsigned int)size.width <= 320 && (unsigned int)size.height <= 200)
            insert(&sizes, size);
    }
    for (size_t i = 0; i < sizes.count; ++i) {
        if (i > 0)
            putchar(',');
        printf("{\"resolution\": \"%dx%d\", \"default\": %s }", sizes.items[i].width,
               sizes.items[i].height, i == 0 ? "true" : "false");
    }
    putchar(']');
    csdk_deinit();
    free(sizes.items);
    return 0;
}
