#pragma once

// CQuorvaneEngine and the 17 plain functions: one air-interface message in, a wide text out. New
// programs will prefer quorvane/decode.h, which gives the same texts as UTF-8, keeps within a
// span, and describes what goes in and comes out.
//
//     #include <quorvane/engine.h>
//
//     CString text;
//     if (quorvaneDecodeEPS_MMUplink(buffer, length, text) == 1) {
//         std::wcout << text.GetString();
//     }
//
// All functions take
//
//   buffer  the message, first octet first, most significant bit of an octet first. It is only
//           read. Decoders look at an element before they test it against the message's end, so
//           max(length, 0) + quorvane::kReadAhead octets (quorvane/decode.h) must be readable;
//           nothing behind those is read. What lies behind the message may show in fields that an
//           error line follows, so pad with zeros to get a deterministic text.
//   length  the message's length in octets. Any value is allowed. ChannelRequest and the two
//           Packet_Control_Acknowledgement functions decode a message of fixed length and
//           ignore it.
//   result  replaced by the text, whatever it held.
//
// and return 1 if the text names a decoded message, also if it reports an error, and 0 if the
// octets start no message of that family and direction: the text is then
// `Failed to decode "..." message`.
//
// Faults that the decoders find are also written to the standard error stream, one line
// "<ERRID:n> ..." each; the lines of a call stand together.
//
// The functions may be called from any number of threads at once, first calls included. Memory
// that runs out leaves as std::bad_alloc with `result` in an unspecified state.

#include <cstdint>

#include "quorvane/cstring.h"
#include "quorvane/export.h"

/// Has no state: all instances are alike, and making one costs nothing.
class QUORVANE_API CQuorvaneEngine {
  public:
    CQuorvaneEngine();
    CQuorvaneEngine(const CQuorvaneEngine& other);
    CQuorvaneEngine& operator=(const CQuorvaneEngine& other);
    virtual ~CQuorvaneEngine();

    int DecodeRRDownlink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeRRUplink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeChannelRequest(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeRRPLENDownlink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeRRSPD(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeL3Downlink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeL3Uplink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeRLC_MACDownlink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeRLC_MACUplink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeEPS_MMDownlink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeEPS_MMUplink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeEPS_SMDownlink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeEPS_SMUplink(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeEPC_SS2UE(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodeEPC_UE2SS(const std::uint8_t* buffer, std::int32_t length, CString& result);
    int DecodePacket_Control_Acknowledgement_8(const std::uint8_t* buffer, std::int32_t length,
                                               CString& result);
    int DecodePacket_Control_Acknowledgement_11(const std::uint8_t* buffer, std::int32_t length,
                                                CString& result);

  protected:
    /// Appends "Decoder reported the following error: ", the text of the decoder's result `code`,
    /// and CR LF.
    void GetErrorMsg(CString& text, int code);
};

extern "C" {

QUORVANE_API int quorvaneDecodeRRDownlink(const std::uint8_t* buffer, std::int32_t length,
                                          CString& result);
QUORVANE_API int quorvaneDecodeRRUplink(const std::uint8_t* buffer, std::int32_t length,
                                        CString& result);
QUORVANE_API int quorvaneDecodeChannelRequest(const std::uint8_t* buffer, std::int32_t length,
                                              CString& result);
QUORVANE_API int quorvaneDecodeRRPLENDownlink(const std::uint8_t* buffer, std::int32_t length,
                                              CString& result);
QUORVANE_API int quorvaneDecodeRRSPD(const std::uint8_t* buffer, std::int32_t length,
                                     CString& result);
QUORVANE_API int quorvaneDecodeL3Downlink(const std::uint8_t* buffer, std::int32_t length,
                                          CString& result);
QUORVANE_API int quorvaneDecodeL3Uplink(const std::uint8_t* buffer, std::int32_t length,
                                        CString& result);
QUORVANE_API int quorvaneDecodeRLC_MACDownlink(const std::uint8_t* buffer, std::int32_t length,
                                               CString& result);
QUORVANE_API int quorvaneDecodeRLC_MACUplink(const std::uint8_t* buffer, std::int32_t length,
                                             CString& result);
QUORVANE_API int quorvaneDecodeEPS_MMDownlink(const std::uint8_t* buffer, std::int32_t length,
                                              CString& result);
QUORVANE_API int quorvaneDecodeEPS_MMUplink(const std::uint8_t* buffer, std::int32_t length,
                                            CString& result);
QUORVANE_API int quorvaneDecodeEPS_SMDownlink(const std::uint8_t* buffer, std::int32_t length,
                                              CString& result);
QUORVANE_API int quorvaneDecodeEPS_SMUplink(const std::uint8_t* buffer, std::int32_t length,
                                            CString& result);
QUORVANE_API int quorvaneDecodeEPC_SS2UE(const std::uint8_t* buffer, std::int32_t length,
                                         CString& result);
QUORVANE_API int quorvaneDecodeEPC_UE2SS(const std::uint8_t* buffer, std::int32_t length,
                                         CString& result);
QUORVANE_API int quorvaneDecodePacket_Control_Acknowledgement_8(const std::uint8_t* buffer,
                                                                std::int32_t length,
                                                                CString& result);
QUORVANE_API int quorvaneDecodePacket_Control_Acknowledgement_11(const std::uint8_t* buffer,
                                                                 std::int32_t length,
                                                                 CString& result);

}  // extern "C"
