#pragma once

#include <zaltag/base/ZALData.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>

/// A folder that goes away with its object; in memory where there is room, unless another place is asked for.
class TemporaryFolder {
  public:
    TemporaryFolder();
    explicit TemporaryFolder(const std::filesystem::path& where);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// Writes a file into the folder and returns its path.
    std::string write(const std::string& name, ZALDataView bytes) const;

  private:
    std::filesystem::path path_;
};

ZALData contentsOf(const std::string& path);

/// Bytes put together.
ZALData joined(std::initializer_list<ZALData> parts);
/// 0, 1, 2 and so on.
ZALData numbered(std::size_t length);
/// A number of 32 bits, big-endian unless asked.
ZALData u32(std::size_t value, bool littleEndian = false);
/// A chunk: id, size, content, and a pad byte behind an odd content.
ZALData chunkOf(std::string_view id, const ZALData& content, bool littleEndian);

/// Silent MPEG 1 layer III frames of 128 kbit/s at 44.1 kHz.
ZALData mpegFrames(int count = 3);

/// One ID3v2.4 frame; a version 2.3 frame has the same form below 128 bytes.
ZALData id3Frame(std::string_view id, const ZALData& payload, std::uint16_t flags = 0);
/// A text frame in Latin-1 or, with another encoding byte, as the bytes are.
ZALData id3Text(std::string_view id, std::string_view text, std::uint8_t encoding = 0);
/// A comment frame in Latin-1.
ZALData id3Comment(std::string_view language, std::string_view description, std::string_view text);
/// An object frame.
ZALData id3Object(std::string_view description, std::string_view mimeType, const ZALData& data);
/// An ID3v2.4 tag of these frames with some padding behind them.
ZALData id3Tag(std::initializer_list<ZALData> frames, std::size_t padding = 0);
/// A 128-byte ID3v1 tag.
ZALData id3v1Tag(std::string_view title, std::string_view artist, std::string_view comment,
                 std::uint8_t genre = 255);

/// The audio of an MP3 file: what is left without an ID3v2 tag in front and an ID3v1 tag behind.
ZALData mp3Audio(const std::string& path);
/// The last 128 bytes of a file when they are an ID3v1 tag; empty otherwise.
ZALData id3v1Of(const std::string& path);

/// A chunk of an IFF file: id, big-endian size, content, and a pad byte behind an odd content.
ZALData iffChunk(std::string_view id, const ZALData& content);
/// An AIFF file of 100 samples with these chunks behind the audio.
ZALData aiffFile(std::initializer_list<ZALData> chunks = {});
