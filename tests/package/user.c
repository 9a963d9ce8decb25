// A program of a user in C: uses every declaration of quorvane/quorvane.h, and exits with 0 if the
// answers are right. The first one that is not is named. Built against the shared library, and as
// an installed one.

#include <stdio.h>
#include <string.h>

#include <quorvane/quorvane.h>

#define CHECK(condition)                                                    \
    do {                                                                    \
        if (!(condition)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            return false;                                                   \
        }                                                                   \
    } while (0)

static bool is(quorvane_text text, const char* expected) {
    return text.data != NULL && text.size == strlen(expected) &&
           memcmp(text.data, expected, text.size) == 0;
}

static bool decodings_are_right(void) {
    const int count = quorvane_decoding_count();
    CHECK(count == 17);
    for (int decoding = 0; decoding < count; ++decoding) {
        const quorvane_text name = quorvane_decoding_name(decoding);
        char text[100];
        snprintf(text, sizeof text, "%.*s", (int)name.size, name.data);
        CHECK(quorvane_find_decoding(text) == decoding);
        CHECK(quorvane_decoding_purpose(decoding).size > 0);
    }
    CHECK(quorvane_find_decoding("eps_smuplink") == -1);
    CHECK(quorvane_find_decoding(NULL) == -1);
    CHECK(is(quorvane_decoding_name(-1), "") && is(quorvane_decoding_name(count), ""));
    CHECK(is(quorvane_decoding_purpose(-1), "") && !quorvane_decoding_is_described(count));
    return true;
}

static bool nothing_is_safe(void) {
    char buffer[100] = "old";
    quorvane_place place = {1, 2};
    quorvane_fault fault = {0};
    const quorvane_field none = {{NULL}};
    quorvane_message_destroy(NULL);
    CHECK(quorvane_message_decode(NULL, 0, NULL, 0) == QUORVANE_WRONG_ARGUMENT);
    CHECK(is(quorvane_message_type(NULL), "") && quorvane_message_decoding(NULL) == -1);
    CHECK(quorvane_message_code(NULL) == -2 && quorvane_message_bits(NULL) == 0);
    CHECK(is(quorvane_message_code_words(NULL), "UNKNOWN MESSAGE"));
    CHECK(!quorvane_field_exists(quorvane_message_root(NULL)));
    CHECK(!quorvane_field_exists(quorvane_message_find(NULL, "A")));
    CHECK(!quorvane_field_exists(quorvane_field_find(none, "A")));
    CHECK(!quorvane_field_exists(quorvane_field_at(none, 0)));
    CHECK(quorvane_field_count(none) == 0 && is(quorvane_field_name(none), ""));
    CHECK(quorvane_field_kind(none) == QUORVANE_NUMBER);
    CHECK(quorvane_field_status(none) == QUORVANE_ABSENT && !quorvane_field_is_optional(none));
    CHECK(quorvane_field_number(none) == 0 && is(quorvane_field_words(none), ""));
    CHECK(quorvane_field_bit_count(none) == 0 && quorvane_field_octets(none).size == 0);
    CHECK(!quorvane_field_place(none, &place) && place.offset == 1 && place.length == 2);
    CHECK(quorvane_field_path(NULL, none, buffer, sizeof buffer) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_fault_count(NULL) == 0 && !quorvane_message_fault(NULL, 0, &fault));
    CHECK(strcmp(buffer, "old") == 0);
    CHECK(quorvane_message_to_json(NULL, buffer, sizeof buffer) == 39);
    CHECK(strcmp(buffer, "{\"decoding\":null,\"type\":null,\"code\":-2}") == 0);
    return true;
}

// Whatever `size` is: the whole length is told, and nothing is written behind the buffer.
static bool cut_right(int decoding, const uint8_t* octets, size_t length, const char* whole,
                      ptrdiff_t (*write)(int, const uint8_t*, size_t, char*, size_t)) {
    const size_t end = strlen(whole);
    CHECK(write(decoding, octets, length, NULL, 0) == (ptrdiff_t)end);
    for (size_t size = 0; size < end + 3; ++size) {
        char buffer[400];
        const size_t kept = size == 0 ? 0 : size <= end ? size - 1 : end;
        memset(buffer, '#', sizeof buffer);
        CHECK(write(decoding, octets, length, buffer, size) == (ptrdiff_t)end);
        CHECK(memcmp(buffer, whole, kept) == 0);
        CHECK(size == 0 || buffer[kept] == '\0');
        CHECK(buffer[size == 0 ? 0 : kept + 1] == '#');
    }
    CHECK(write(decoding, octets, length, NULL, 1) == QUORVANE_WRONG_ARGUMENT);
    CHECK(write(decoding, NULL, 1, NULL, 0) == QUORVANE_WRONG_ARGUMENT);
    CHECK(write(-1, octets, length, NULL, 0) == QUORVANE_WRONG_ARGUMENT);
    CHECK(write(quorvane_decoding_count(), octets, length, NULL, 0) == QUORVANE_WRONG_ARGUMENT);
    CHECK(write(decoding, NULL, 0, NULL, 0) > 0);
    return true;
}

// DEACTIVATE TEST MODE COMPLETE, TS 36.509.
static bool texts_are_right(void) {
    const uint8_t octets[] = {0x0F, 0x87};
    const int decoding = quorvane_find_decoding("EPC_UE2SS");
    const bool known = quorvane_decoding_is_described(decoding);
    const char* text = known ? "Decoded using \"EPC_UE2SS\".\n"
                               "MESSAGE: DEACTIVATE_TEST_MODE_COMPLETE\n{\n}\n"
                             : "Failed to decode \"EPC_UE2SS\" message";
    const char* json =
        known ? "{\"decoding\":\"EPC_UE2SS\",\"type\":\"DEACTIVATE_TEST_MODE_COMPLETE\","
                "\"code\":0,\"bits\":16,\"fields\":{}}"
              : "{\"decoding\":\"EPC_UE2SS\",\"type\":null,\"code\":-2}";
    return cut_right(decoding, octets, sizeof octets, text, quorvane_decode_to_text) &&
           cut_right(decoding, octets, sizeof octets, json, quorvane_decode_to_json);
}

// PDN CONNECTIVITY REQUEST, TS 24.301, with options that have a protocol of two octets, and one
// whose length is wrong.
static const uint8_t request[] = {0x02, 0x01, 0xD0, 0x31, 0x27, 0x09, 0x80, 0x00,
                                  0x0D, 0x02, 0xAB, 0xCD, 0x00, 0x0A, 0x01};

static bool fields_are_right(quorvane_message* message) {
    const quorvane_field root = quorvane_message_root(message);
    CHECK(quorvane_field_kind(root) == QUORVANE_STRUCT && quorvane_field_count(root) == 7);
    CHECK(is(quorvane_field_name(root), "PDN_CONNECTIVITY_REQUEST"));

    const quorvane_field type = quorvane_message_find(message, "PDNType");
    quorvane_place place = {0, 0};
    CHECK(quorvane_field_exists(type) && is(quorvane_field_name(type), "PDNType"));
    CHECK(is(quorvane_field_name(quorvane_field_at(root, 3)), "PDNType"));
    CHECK(quorvane_field_kind(type) == QUORVANE_ENUMERATED && !quorvane_field_is_optional(type));
    CHECK(quorvane_field_status(type) == QUORVANE_DECODED);
    CHECK(quorvane_field_number(type) == 3 && is(quorvane_field_words(type), "IPv4v6"));
    CHECK(quorvane_field_place(type, &place) && place.offset == 24 && place.length == 4);
    CHECK(quorvane_field_place(type, NULL));
    CHECK(!quorvane_field_exists(quorvane_field_at(root, 7)));
    CHECK(!quorvane_field_exists(quorvane_message_find(message, "Nothing")));
    CHECK(!quorvane_field_exists(quorvane_message_find(message, NULL)));

    const quorvane_field options = quorvane_message_find(message, "ProtocolConfigurationOptions");
    CHECK(quorvane_field_status(options) == QUORVANE_REFUSED);
    CHECK(quorvane_field_is_optional(options));
    const quorvane_field list = quorvane_field_find(options, "ProtocolCfgs");
    CHECK(quorvane_field_kind(list) == QUORVANE_SEQUENCE && quorvane_field_count(list) > 0);
    const quorvane_field contents = quorvane_field_find(list, "[0].Contents");
    CHECK(quorvane_field_kind(contents) == QUORVANE_BITS);
    CHECK(quorvane_field_bit_count(contents) == 16);
    const quorvane_octets octets = quorvane_field_octets(contents);
    CHECK(octets.size == 2 && octets.data[0] == 0xAB && octets.data[1] == 0xCD);

    const char* path = "ProtocolConfigurationOptions.ProtocolCfgs[0].Contents";
    char buffer[100];
    CHECK(quorvane_field_path(message, contents, buffer, sizeof buffer) == (ptrdiff_t)strlen(path));
    CHECK(strcmp(buffer, path) == 0);
    CHECK(quorvane_field_path(message, contents, NULL, 0) == (ptrdiff_t)strlen(path));
    return true;
}

static bool faults_are_right(quorvane_message* message) {
    quorvane_fault fault = {0};
    CHECK(quorvane_message_fault_count(message) > 0);
    CHECK(quorvane_message_fault(message, 0, &fault));
    CHECK(fault.number > 0 && fault.offset == 48);
    CHECK(is(fault.words, "Error decoding subfield ProtocolConfigurationOptions"));
    CHECK(is(quorvane_field_name(fault.field), "ProtocolConfigurationOptions"));
    CHECK(!quorvane_message_fault(message, quorvane_message_fault_count(message), &fault));
    CHECK(!quorvane_message_fault(message, 0, NULL));
    return true;
}

static bool json_is_right(quorvane_message* message, int decoding) {
    char one[2000];
    char same[2000];
    const ptrdiff_t size = quorvane_message_to_json(message, one, sizeof one);
    CHECK(size > 0 && (size_t)size < sizeof one && strlen(one) == (size_t)size);
    CHECK(strstr(one, "\"PDNType\":{\"value\":3,\"words\":\"IPv4v6\",\"at\":[24,4]}") != NULL);
    CHECK(quorvane_decode_to_json(decoding, request, sizeof request, same, sizeof same) == size);
    CHECK(strcmp(one, same) == 0);
    CHECK(quorvane_message_to_json(message, NULL, 0) == size);
    return true;
}

static bool message_is_right(quorvane_message* message) {
    const uint8_t nonsense[] = {0xFF, 0xFF, 0xFF};
    const int decoding = quorvane_find_decoding("EPS_SMUplink");
    CHECK(message != NULL && quorvane_message_decoding(message) == -1);
    if (!quorvane_decoding_is_described(decoding)) {
        return quorvane_message_decode(message, decoding, request, 4) == QUORVANE_NOT_FOUND;
    }
    CHECK(quorvane_message_decode(message, decoding, request, 4) == QUORVANE_FOUND);
    CHECK(quorvane_message_decoding(message) == decoding && quorvane_message_bits(message) == 32);
    CHECK(quorvane_message_decode(message, decoding, request, sizeof request) == QUORVANE_FOUND);
    CHECK(is(quorvane_message_type(message), "PDN_CONNECTIVITY_REQUEST"));
    CHECK(quorvane_message_code(message) == 0 && is(quorvane_message_code_words(message), ""));
    CHECK(fields_are_right(message) && faults_are_right(message));
    CHECK(json_is_right(message, decoding));

    CHECK(quorvane_message_decode(message, decoding, nonsense, 3) == QUORVANE_NOT_FOUND);
    CHECK(is(quorvane_message_type(message), "") && quorvane_message_code(message) == -2);
    CHECK(quorvane_message_decode(message, decoding, request, 4) == QUORVANE_FOUND);
    CHECK(quorvane_message_decode(message, decoding, NULL, 4) == QUORVANE_WRONG_ARGUMENT);
    CHECK(!quorvane_field_exists(quorvane_message_root(message)));
    CHECK(quorvane_message_decode(message, -1, request, 4) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_decode(message, decoding, NULL, 0) == QUORVANE_NOT_FOUND);
    return true;
}

int main(void) {
    quorvane_message* message = quorvane_message_create();
    const bool right = strlen(quorvane_version()) >= strlen("1.0.0") && decodings_are_right() &&
                       nothing_is_safe() && texts_are_right() && message_is_right(message);
    quorvane_message_destroy(message);
    return right ? 0 : 1;
}
