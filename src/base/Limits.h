#pragma once

#include <cstddef>
#include <cstdint>

// What a file may cost before it is refused, and why each bound is where it is: far above any real file, and
// far below what brings a host down. Lengths are bytes. docs/security.md has the same table for readers; the
// bounds of JSON texts are public, in ZALJSON.h.
namespace zal::limits {

// ID3v2

/// Frames of a tag, and twice as many with those in its chapters. TagLib searches all of them for each one it
/// removes, so that a setter's work grows with their square; real tags have some hundred.
inline constexpr unsigned id3Frames = 10'000;

/// Chapters and their tables within one another. TagLib reads them by recursion, and decodes an
/// unsynchronised tag anew at every level. They are meant to stand beside one another. At every level a byte
/// belongs to one frame; a hostile frame can say that its content goes on to the tag's end, as can the next.
inline constexpr int id3ChapterNesting = 3;

/// Parts between NULs in the texts of a tag. TagLib makes two objects of each, some 130 bytes for a letter.
inline constexpr std::uint64_t id3TextParts = 200'000;

/// The genres of a tag, and lyrics that are compressed. TagLib compares every genre with every other and
/// copies the rest of the text for each in brackets; it looks for the end of each line of lyrics anew.
inline constexpr std::uint64_t id3Genres = 32U << 10;

/// What a tag's compressed frames may become, with what it takes to see that: a few megabytes can become
/// gigabytes. Hardly any program compresses frames, and pictures are some megabytes.
inline constexpr std::size_t id3Inflated = 64U << 20;

/// How far the first MPEG frame is searched for; what stands before it is tags, or padding of a few
/// kilobytes.
inline constexpr long mpegSearch = 1 << 20;

// MP4

/// Atoms within one another. TagLib walks them by recursion, and its stack holds less than 100,000 of them.
/// Real files nest seven.
inline constexpr std::size_t mp4Nesting = 32;

/// Atoms and values. TagLib keeps an object of some 400 bytes for each, which can have as few as 8 bytes in
/// the file. A mix of ten hours in fragments of one second has a quarter of a million.
inline constexpr std::size_t mp4Atoms = 1 << 18;

// FLAC

/// Metadata blocks. TagLib keeps an object of some 150 bytes for each, which can have as few as 4 bytes in
/// the file. Real files have some ten, most of them pictures.
inline constexpr int flacBlocks = 1 << 16;

// WAV and AIFF

/// Chunks of a file: more than any program writes; TagLib's work grows with their square.
inline constexpr std::size_t formChunks = 10'000;

/// The longest chunk that is read whole, as long as an ID3v2 tag can be, and as those in front of MP3 and
/// FLAC are in all.
inline constexpr std::uint32_t formTag = std::uint32_t{1} << 28;

/// The room that a WAV file's processing record needs below 4 GiB: more than any record takes.
inline constexpr std::int64_t wavRecord = 1 << 20;

// Pictures. A few kilobytes can claim any size, so these bounds, not the file, decide how much memory and
// time a decoder gets. The largest covers sold today have 9 mega pixels.

/// Pixels of a picture; at four bytes each, 256 MB.
inline constexpr std::uint64_t picturePixels = 64U << 20;

/// Pixels where the decoder keeps nine more bytes for each (GIF, BMP).
inline constexpr std::uint64_t heavyPicturePixels = 16U << 20;

/// Pixels that one listing decodes, a gigabyte's worth: a small file can hold a thousand pictures of the
/// largest size.
inline constexpr std::uint64_t listedPixels = 256U << 20;

/// What a decoder may hold beside the pixels: a progressive JPEG of the largest size needs three quarters of
/// it.
inline constexpr std::size_t decoderMemory = 512U << 20;

/// Passes over a progressive JPEG. Encoders make about ten; each one beyond costs a whole picture's work for
/// a few bytes.
inline constexpr int jpegScans = 64;

/// Chunks of a WebP file; the format knows seven kinds.
inline constexpr std::size_t webpChunks = 1000;

// Collections

/// Elements within one another: playlist folders are read by recursion. Nobody nests a thousand folders.
inline constexpr int xmlNesting = 1000;

/// What is a path at most, as the system has it. To put the accents of a longer text into their order would
/// take the square of their number.
inline constexpr std::size_t path = 4096;

/// Beats of a track: a day of music at 690 beats a minute.
inline constexpr std::size_t beats = 1'000'000;

}  // namespace zal::limits
