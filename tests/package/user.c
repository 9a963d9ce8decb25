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
    quorvane_surplus surplus = {0};
    quorvane_security_header header = {1, 2, 3};
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
    CHECK(quorvane_message_decode_with(NULL, 0, NULL, 0, 0) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_surplus_count(NULL) == 0);
    CHECK(!quorvane_message_surplus(NULL, 0, &surplus));
    CHECK(!quorvane_message_security(NULL, &header) && header.authentication_code == 3);
    CHECK(strcmp(buffer, "old") == 0);
    CHECK(quorvane_message_to_text(NULL, buffer, sizeof buffer) == 0 && buffer[0] == '\0');
    CHECK(quorvane_message_to_json(NULL, buffer, sizeof buffer) == 39);
    CHECK(strcmp(buffer, "{\"decoding\":null,\"type\":null,\"code\":-2}") == 0);
    return true;
}

static bool setting_nothing_is_safe(void) {
    const uint8_t octet = 0;
    uint8_t room = 7;
    int64_t bits = 7;
    const quorvane_error error = quorvane_message_error(NULL);
    CHECK(error.kind == QUORVANE_ERROR_NONE && is(error.path, "") && is(error.words, ""));
    CHECK(quorvane_message_make(NULL, 0, "A") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_number(NULL, "A", 0) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_words(NULL, "A", "B") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_bits(NULL, "A", &octet, 8) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_choose(NULL, "A", "B") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_resize(NULL, "A", 1) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_append(NULL, "A") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_add(NULL, "A") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_clear(NULL, "A") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_encode(NULL, &room, 1, &bits) == QUORVANE_WRONG_ARGUMENT);
    CHECK(room == 7 && bits == 7);
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

static bool text_is_right(quorvane_message* message, int decoding) {
    char one[2000];
    char same[2000];
    const ptrdiff_t size = quorvane_message_to_text(message, one, sizeof one);
    CHECK(size > 0 && (size_t)size < sizeof one && strlen(one) == (size_t)size);
    CHECK(strstr(one, "\n  PDNType: LOC:[24,4] IPv4v6 (3)\n") != NULL);
    CHECK(quorvane_decode_to_text(decoding, request, sizeof request, same, sizeof same) == size);
    CHECK(strcmp(one, same) == 0);
    CHECK(quorvane_message_to_text(message, NULL, 0) == size);
    CHECK(quorvane_message_to_text(message, NULL, 1) == QUORVANE_WRONG_ARGUMENT);
    memset(one, '#', sizeof one);
    CHECK(quorvane_message_to_text(message, one, 5) == size);
    CHECK(memcmp(one, "Deco\0#", 6) == 0);
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
    CHECK(text_is_right(message, decoding) && json_is_right(message, decoding));
    CHECK(quorvane_message_surplus_count(message) == 0);
    CHECK(!quorvane_message_security(message, NULL));

    CHECK(quorvane_message_decode(message, decoding, nonsense, 3) == QUORVANE_NOT_FOUND);
    CHECK(is(quorvane_message_type(message), "") && quorvane_message_code(message) == -2);
    CHECK(quorvane_message_decode(message, decoding, request, 4) == QUORVANE_FOUND);
    CHECK(quorvane_message_decode(message, decoding, NULL, 4) == QUORVANE_WRONG_ARGUMENT);
    CHECK(!quorvane_field_exists(quorvane_message_root(message)));
    CHECK(quorvane_message_decode(message, -1, request, 4) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_decode(message, decoding, NULL, 0) == QUORVANE_NOT_FOUND);
    return true;
}

// ATTACH ACCEPT, TS 24.301, 8.2.1, behind a security header (9.1): type 2, "integrity protected and
// ciphered", authentication code AABBCCDD, sequence number FE. Two pieces of a later release: the
// second octet of the network feature support, and an element 6A.
static const uint8_t accept[] = {0x27, 0xAA, 0xBB, 0xCC, 0xDD, 0xFE,        // header
                                 0x07, 0x42, 0x02, 0x49,                    // combined, T3412
                                 0x06, 0x00, 0x62, 0xF2, 0x10, 0x00, 0x01,  // a tracking area
                                 0x00, 0x10, 0x52, 0x01, 0xC1, 0x01, 0x09,  // default bearer
                                 0x04, 0x03, 0x61, 0x62, 0x63,              // "abc"
                                 0x05, 0x01, 0x0A, 0x00, 0x00, 0x01,        // 10.0.0.1
                                 0x64, 0x02, 0x01, 0x3F, 0x6A, 0x01, 0x21};

static bool tolerant_reading_is_right(quorvane_message* message) {
    const uint32_t options = QUORVANE_TOLERANT | QUORVANE_DECIPHERED;
    const int decoding = quorvane_find_decoding("EPS_MMDownlink");
    quorvane_surplus surplus = {0};
    quorvane_security_header header = {0};
    char path[100];
    if (!quorvane_decoding_is_described(decoding)) {
        return true;
    }
    CHECK(quorvane_message_decode_with(message, decoding, accept, sizeof accept, options) ==
          QUORVANE_FOUND);
    CHECK(is(quorvane_message_type(message), "ATTACH_ACCEPT"));
    CHECK(quorvane_message_code(message) == 0 && quorvane_message_fault_count(message) == 0);
    CHECK(quorvane_message_bits(message) == 8 * (int64_t)sizeof accept);
    CHECK(quorvane_message_security(message, &header) && header.type == 2);
    CHECK(header.authentication_code == 0xAABBCCDD && header.sequence_number == 0xFE);
    CHECK(quorvane_message_security(message, NULL));

    CHECK(quorvane_message_surplus_count(message) == 2);
    CHECK(quorvane_message_surplus(message, 0, &surplus));
    CHECK(surplus.kind == QUORVANE_REST && surplus.iei == 0x64 && surplus.bit_count == 8);
    CHECK(surplus.octets.size == 1 && surplus.octets.data[0] == 0x3F);
    CHECK(surplus.place.offset == 38 * 8 && surplus.place.length == 8);
    CHECK(is(quorvane_field_name(surplus.field), "EPSNetworkFeatureSupport"));
    CHECK(quorvane_message_surplus(message, 1, &surplus));
    CHECK(surplus.kind == QUORVANE_ELEMENT && surplus.iei == 0x6A && surplus.bit_count == 24);
    CHECK(surplus.octets.size == 3 && surplus.octets.data[2] == 0x21);
    CHECK(quorvane_field_path(message, surplus.field, path, sizeof path) == 0);
    CHECK(!quorvane_message_surplus(message, 2, &surplus) && surplus.iei == 0x6A);
    CHECK(!quorvane_message_surplus(message, 0, NULL));

    // Without the options one by one.
    CHECK(quorvane_message_decode_with(message, decoding, accept, sizeof accept,
                                       QUORVANE_TOLERANT) == QUORVANE_FOUND);
    CHECK(is(quorvane_message_type(message), "SECURITY_PROTECTED_NAS_MESSAGE"));
    CHECK(quorvane_message_decode_with(message, decoding, accept + 6, sizeof accept - 6,
                                       QUORVANE_DECIPHERED) == QUORVANE_FOUND);
    CHECK(quorvane_message_code(message) == -12 && quorvane_message_surplus_count(message) == 0);
    CHECK(quorvane_message_decode_with(message, decoding, accept, sizeof accept, 4) ==
          QUORVANE_WRONG_ARGUMENT);
    CHECK(!quorvane_field_exists(quorvane_message_root(message)));
    return true;
}

#define OPTIONS "ProtocolConfigurationOptions"
#define PROTOCOLS OPTIONS ".ProtocolCfgs"

// The error of the last call is of that kind, at that path, and its words have those of `words`.
static bool error_is(quorvane_message* message, int kind, const char* path, const char* words) {
    const quorvane_error error = quorvane_message_error(message);
    char all[1000];
    snprintf(all, sizeof all, "%.*s", (int)error.words.size, error.words.data);
    CHECK((int)error.kind == kind && is(error.path, path));
    CHECK(kind == QUORVANE_ERROR_NONE ? all[0] == '\0' : strstr(all, words) != NULL);
    return true;
}

// PDN CONNECTIVITY REQUEST, TS 24.301, 8.3.20, as encode_is_right writes it.
static bool fields_can_be_set(quorvane_message* message, int decoding) {
    const uint8_t name[] = {0x03, 'a', 'b', 'c'};
    const uint8_t contents[] = {0xAB, 0xCD};
    CHECK(quorvane_message_make(message, decoding, "PDN_CONNECTIVITY_REQUEST") == 0);
    CHECK(is(quorvane_message_type(message), "PDN_CONNECTIVITY_REQUEST"));
    CHECK(quorvane_message_decoding(message) == decoding);
    CHECK(quorvane_message_set_number(message, "EPSBearerIdentity", 0) == 0);
    CHECK(quorvane_message_set_number(message, "ProcedureTransactionIdentity", 1) == 0);
    CHECK(quorvane_message_set_number(message, "RequestType", 1) == 0);
    CHECK(quorvane_message_set_words(message, "PDNType", "IPv4") == 0);
    CHECK(quorvane_message_set_number(message, "ESMInformationTransferFlag", 1) == 0);
    CHECK(quorvane_message_clear(message, "ESMInformationTransferFlag") == 0);
    CHECK(quorvane_message_set_bits(message, "AccessPointName", name, 32) == 0);
    CHECK(quorvane_message_add(message, OPTIONS) == 0);
    CHECK(quorvane_message_set_number(message, OPTIONS ".ConfigurationProtocol", 0) == 0);
    CHECK(quorvane_message_resize(message, PROTOCOLS, 1) == 0);
    CHECK(quorvane_message_append(message, PROTOCOLS) == 0);
    CHECK(quorvane_message_set_number(message, PROTOCOLS "[0].ProtocolId", 13) == 0);
    CHECK(quorvane_message_set_bits(message, PROTOCOLS "[0].Contents", contents, 16) == 0);
    CHECK(quorvane_message_set_number(message, PROTOCOLS "[1].ProtocolId", 10) == 0);
    CHECK(quorvane_message_set_bits(message, PROTOCOLS "[1].Contents", NULL, 0) == 0);
    CHECK(error_is(message, QUORVANE_ERROR_NONE, "", ""));
    CHECK(quorvane_field_number(quorvane_message_find(message, "PDNType")) == 1);
    return true;
}

static bool encode_is_right(quorvane_message* message) {
    const uint8_t whole[] = {0x02, 0x01, 0xD0, 0x11, 0x28, 0x04, 0x03, 0x61, 0x62, 0x63, 0x27,
                             0x09, 0x80, 0x00, 0x0D, 0x02, 0xAB, 0xCD, 0x00, 0x0A, 0x00};
    const ptrdiff_t end = (ptrdiff_t)sizeof whole;
    int64_t bits = -1;
    CHECK(quorvane_message_encode(message, NULL, 0, NULL) == end);
    for (size_t size = 0; size < sizeof whole + 3; ++size) {
        uint8_t octets[sizeof whole + 3];
        memset(octets, '#', sizeof octets);
        CHECK(quorvane_message_encode(message, octets, size, &bits) == end);
        if (size < sizeof whole) {
            CHECK(octets[0] == '#' && octets[sizeof whole - 1] == '#' && bits == -1);
            CHECK(error_is(message, QUORVANE_ERROR_NO_ROOM, "", "takes 21 octets"));
        } else {
            CHECK(memcmp(octets, whole, sizeof whole) == 0 && bits == 8 * end);
            CHECK(octets[sizeof whole] == '#');
            CHECK(error_is(message, QUORVANE_ERROR_NONE, "", ""));
        }
    }
    CHECK(quorvane_message_encode(message, NULL, 1, NULL) == QUORVANE_WRONG_ARGUMENT);

    uint8_t octet = 7;
    CHECK(quorvane_message_append(message, PROTOCOLS) == 0);
    CHECK(quorvane_message_encode(message, &octet, 1, &bits) == QUORVANE_ERROR && octet == 7);
    CHECK(error_is(message, QUORVANE_ERROR_MISSING, PROTOCOLS "[2]", "never set"));
    return true;
}

static bool errors_are_right(quorvane_message* message, int decoding) {
    const char* no_path = "A[";
    const char* transaction = "ProcedureTransactionIdentity";
    const uint8_t octet = 0;
    CHECK(quorvane_message_make(message, decoding, "PDN") == QUORVANE_ERROR_UNKNOWN_NAME);
    CHECK(error_is(message, QUORVANE_ERROR_UNKNOWN_NAME, "", "PDN_CONNECTIVITY_REQUEST"));
    CHECK(quorvane_message_set_number(message, no_path, 1) == QUORVANE_ERROR_UNKNOWN_NAME);
    CHECK(quorvane_message_set_number(message, transaction, 256) == QUORVANE_ERROR_VALUE_TOO_LARGE);
    CHECK(error_is(message, QUORVANE_ERROR_VALUE_TOO_LARGE, transaction, "up to 255"));
    CHECK(quorvane_message_set_words(message, "PDNType", "IPv5") == QUORVANE_ERROR_UNKNOWN_NAME);
    CHECK(quorvane_message_set_bits(message, "PDNType", &octet, 8) == QUORVANE_ERROR_WRONG_KIND);
    CHECK(quorvane_message_choose(message, "PDNType", "IPv4") == QUORVANE_ERROR_WRONG_KIND);
    CHECK(quorvane_message_resize(message, PROTOCOLS, SIZE_MAX) == QUORVANE_ERROR_TOO_MANY_ITEMS);
    CHECK(quorvane_message_append(message, "PDNType") == QUORVANE_ERROR_WRONG_KIND);
    CHECK(quorvane_message_add(message, PROTOCOLS "[9]") == QUORVANE_ERROR_INDEX_OUT_OF_RANGE);
    CHECK(quorvane_message_clear(message, "PDNType") == QUORVANE_ERROR_NOT_OPTIONAL);
    CHECK(error_is(message, QUORVANE_ERROR_NOT_OPTIONAL, "PDNType", "cannot do without"));
    // No octet is read ahead of the check against the type.
    CHECK(quorvane_message_set_bits(message, "AccessPointName", &octet, UINT32_MAX) ==
          QUORVANE_ERROR_TOO_MANY_BITS);

    CHECK(quorvane_message_make(message, -1, "A") == QUORVANE_WRONG_ARGUMENT);
    CHECK(error_is(message, QUORVANE_ERROR_NONE, "", ""));
    CHECK(quorvane_message_make(message, decoding, NULL) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_number(message, NULL, 1) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_words(message, NULL, "IPv4") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_words(message, "PDNType", NULL) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_bits(message, NULL, &octet, 8) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_set_bits(message, "AccessPointName", NULL, 8) ==
          QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_choose(message, NULL, "A") == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_choose(message, "PDNType", NULL) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_resize(message, NULL, 1) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_append(message, NULL) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_add(message, NULL) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_message_clear(message, NULL) == QUORVANE_WRONG_ARGUMENT);
    CHECK(quorvane_field_number(quorvane_message_find(message, "PDNType")) == 1);
    return true;
}

static bool choices_are_right(quorvane_message* message) {
    const int decoding = quorvane_find_decoding("EPS_MMUplink");
    const char* identity = "EPSMobileIdentity.GUTI.M_TMSI";
    CHECK(quorvane_message_make(message, decoding, "ATTACH_REQUEST") == 0);
    CHECK(quorvane_message_choose(message, "EPSMobileIdentity", "GUTI") == 0);
    CHECK(quorvane_message_set_number(message, identity, 0xFFFFFFFF) == 0);
    CHECK(quorvane_field_number(quorvane_message_find(message, identity)) == 0xFFFFFFFF);
    CHECK(quorvane_message_resize(message, "EPSMobileIdentity.IMSI.IdentityDigit", 1) ==
          QUORVANE_ERROR_OTHER_ALTERNATIVE);
    CHECK(error_is(message, QUORVANE_ERROR_OTHER_ALTERNATIVE, "EPSMobileIdentity.IMSI", "GUTI"));
    CHECK(quorvane_message_choose(message, "EPSMobileIdentity", "IMEI") ==
          QUORVANE_ERROR_UNKNOWN_NAME);
    return true;
}

static bool setting_is_right(void) {
    const int decoding = quorvane_find_decoding("EPS_SMUplink");
    quorvane_message* message = quorvane_message_create();
    bool right = message != NULL && error_is(message, QUORVANE_ERROR_NONE, "", "") &&
                 quorvane_message_set_number(message, "A", 1) == QUORVANE_ERROR_NO_MESSAGE &&
                 quorvane_message_encode(message, NULL, 0, NULL) == QUORVANE_ERROR;
    if (!quorvane_decoding_is_described(decoding)) {
        right = right && quorvane_message_make(message, decoding, "PDN_CONNECTIVITY_REQUEST") ==
                             QUORVANE_ERROR_NO_MESSAGE;
    } else {
        right = right && fields_can_be_set(message, decoding) && encode_is_right(message) &&
                errors_are_right(message, decoding) && choices_are_right(message);
    }
    quorvane_message_destroy(message);
    return right;
}

int main(void) {
    quorvane_message* message = quorvane_message_create();
    const bool right = strlen(quorvane_version()) >= strlen("1.0.0") && decodings_are_right() &&
                       nothing_is_safe() && setting_nothing_is_safe() && texts_are_right() &&
                       message_is_right(message) && tolerant_reading_is_right(message) &&
                       setting_is_right();
    quorvane_message_destroy(message);
    return right ? 0 : 1;
}
