// Lists the IMSIs, cell identities and causes in messages, as identities.cpp does.

#include <stdio.h>
#include <string.h>

#include <quorvane/quorvane.h>

static void list(quorvane_field field, const char* around) {  // `around` names items of a list
    const quorvane_text own = quorvane_field_name(field), words = quorvane_field_words(field);
    const bool imsi = quorvane_field_number(quorvane_field_find(field, "IdentityType")) == 1;
    char name[100];
    snprintf(name, sizeof name, "%.*s%s", (int)own.size, own.data, own.size > 0 ? "" : around);
    const bool cause = strstr(name, "ause") || strstr(name, "CAUSE");
    const bool cell = strstr(name, "CellId") || strstr(name, "Cell_Id");
    if (imsi || strcmp(name, "IMSI") == 0) {
        const quorvane_field digits = quorvane_field_find(field, "IdentityDigit");
        for (size_t index = 0; index < quorvane_field_count(digits); ++index)
            printf("%s%u", index == 0 ? "IMSI " : "",
                   (unsigned)quorvane_field_number(quorvane_field_at(digits, index)));
        printf("\n");
    } else if (quorvane_field_kind(field) <= QUORVANE_ENUMERATED && (cause || cell))
        printf("%s %u\t%.*s\n", name, quorvane_field_number(field), (int)words.size, words.data);
    for (size_t index = 0; index < quorvane_field_count(field); ++index)
        if (quorvane_field_status(quorvane_field_at(field, index)) == QUORVANE_DECODED)
            list(quorvane_field_at(field, index), name);
}

int main(void) {
    quorvane_message* message = quorvane_message_create();
    for (char function[50], hex[2001]; scanf("%49s %*s %2000s", function, hex) == 2;) {
        uint8_t octets[1000];
        size_t count = 0;
        while (sscanf(hex + 2 * count, "%2hhx", &octets[count]) == 1)
            ++count;
        quorvane_message_decode(message, quorvane_find_decoding(function), octets, count);
        list(quorvane_message_root(message), "");
    }
    quorvane_message_destroy(message);
}
