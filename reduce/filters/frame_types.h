#pragma once

#include "core/guid.h"

/// The pixel types of frames that the built-in decoders take, by family; a customer finds a decoder by them with
/// `CFilterFactory::CreateForPixelType`. Each is entered in the registry of pixel types but for those of headers, which
/// stand for a header line that was kept apart from its frame.
namespace ovix::reduce::frame_types {

// "K410", the R7X camera included.
inline constexpr GUID kK410F7M0 = "{76ECF27C-7517-49D1-AED0-8C429934409D}"_guid;
inline constexpr GUID kK410FNM0 = "{E97ED85F-B45C-409C-B685-0568E493A9D0}"_guid;
inline constexpr GUID kK410GigE = "{3874994E-B76D-45DE-871A-5CF46393B19B}"_guid;
inline constexpr GUID kK410GigEFlipped = "{B3E83B04-FC6B-411D-B883-258685C80882}"_guid;
inline constexpr GUID kK410UYVY = "{4030E1B1-6E28-4E5C-88F7-16E54AF6A54A}"_guid;
inline constexpr GUID kK410YUY2 = "{DDBF6368-76B6-49F2-A410-6CC47415AFD3}"_guid;
inline constexpr GUID kK410BGR = "{036DA1C3-5794-4341-8BC1-5DEEAB52DFD5}"_guid;
inline constexpr GUID kK410MJLS = "{ADA2658E-40C0-4C31-9C44-7667B8169FF6}"_guid;

// "LOR-RA" and "LOR-SB".
inline constexpr GUID kLORRA = "{B3CC3849-01F1-499C-90E6-4799CE2979FF}"_guid;
inline constexpr GUID kLORRAHeader = "{ABD16A8F-BB4A-415C-9BC6-7AB387743F25}"_guid;
inline constexpr GUID kLORSB = "{762A7AEB-B98E-4628-8A7B-7AEE737F7754}"_guid;
inline constexpr GUID kLORSBHeader = "{0C784596-B058-4D52-90C3-E995D9175865}"_guid;

// "Osprey".
inline constexpr GUID kOsprey = "{1A3CAA37-2D15-4D6D-B4FE-B1FC2332D49A}"_guid;
inline constexpr GUID kOspreyHeader = "{E71E484F-1C37-4BB8-B4E2-EBF0727402F9}"_guid;

// "MVFalcon".
inline constexpr GUID kMVFalcon = "{8C2E0C91-A8D9-47E7-8667-482577F366B4}"_guid;
inline constexpr GUID kMVFalconHeader = "{20DD2639-38C0-4E57-99EE-1B9224F8E5E2}"_guid;

// "Lapwing" and "Wren".
inline constexpr GUID kLapwing = "{AD56BAF5-751A-4328-B058-72B124803183}"_guid;
inline constexpr GUID kWren = "{7E48B0A6-78A9-44BC-80E8-7888C83854F7}"_guid;

// "MV310".
inline constexpr GUID kMV310 = "{07C06B52-E505-45EA-85F5-73C9E5F0519C}"_guid;
inline constexpr GUID kMV310Screen = "{B9A7A170-5FEF-4CBC-96E4-E6B84B9F56D7}"_guid;
inline constexpr GUID kMV310YUV = "{4C264D2A-288C-4A7B-A9A4-A9E18695CDFE}"_guid;

// "Plover".
inline constexpr GUID kPlover = "{FD728B9B-9B9B-4098-81E4-73EC59D2505C}"_guid;
inline constexpr GUID kPloverYUV = "{0612D7F1-A3F5-423B-8A16-F77199066239}"_guid;

// Forms of pixels that belong to no family; the types of several families stand on them.
inline constexpr GUID kF7M0 = "{44ACBC8C-03B3-4599-B784-14DAD5C4BBF8}"_guid;
inline constexpr GUID kF7M2 = "{F5143BE1-3F5C-46E8-99B7-E5BC2A0A9990}"_guid;
inline constexpr GUID kF7M3 = "{6AAAF0FA-3BCF-41A4-842E-EEE17BFA1C00}"_guid;
inline constexpr GUID kUYVY = "{BB8A3D05-C4F6-4193-B198-08D9E797E886}"_guid;
inline constexpr GUID kYUY2 = "{88DF0B84-7417-41CB-9B49-2F585323D620}"_guid;
inline constexpr GUID kY800 = "{327F8ED5-4584-48C7-9FB1-E326376CD4B8}"_guid;
inline constexpr GUID kBGR8 = "{5BA4C88B-EBB4-4676-88E4-FC5C0FF6EB36}"_guid;

}  // namespace ovix::reduce::frame_types
