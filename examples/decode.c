// Shows one message: its text, and the same as JSON, as decode.cpp does.

#include <stdio.h>
#include <stdlib.h>

#include <quorvane/quorvane.h>

typedef ptrdiff_t writer(int, const uint8_t*, size_t, char*, size_t);

// Asks for the length first. Returns whether it could print.
static bool print(writer* write, int decoding, const uint8_t* octets, size_t length) {
    const ptrdiff_t size = write(decoding, octets, length, NULL, 0);
    char* text = size >= 0 ? malloc((size_t)size + 1) : NULL;
    if (text == NULL)
        return false;
    write(decoding, octets, length, text, (size_t)size + 1);
    fputs(text, stdout);
    free(text);
    return true;
}

int main(void) {
    const uint8_t octets[] = {0x02, 0x01, 0xD0, 0x31};  // TS 24.301, 8.3.20
    const int decoding = quorvane_find_decoding("EPS_SMUplink");
    const bool done = print(quorvane_decode_to_text, decoding, octets, sizeof octets) &&
                      print(quorvane_decode_to_json, decoding, octets, sizeof octets);
    puts("");
    return done ? 0 : 1;
}
