// SPDX-License-Identifier: MIT
// Conversions of bytes and texts.  The times include all that a library needs to give the
// result in memory of its own.

#include <absl/strings/escaping.h>
#include <curl/curl.h>
#include <glib.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <uriparser/Uri.h>

extern "C" {  // its headers leave this out
#include <b64/cdecode.h>
#include <b64/cencode.h>
}

#include <memory>

#include "bytearray.h"
#include "conversion.h"
#include "html_escape.h"
#include "library.h"

namespace {

using buffer = std::unique_ptr<unsigned char[]>;

buffer newBuffer(std::size_t size) {
  return buffer(new unsigned char[size]);
}

const unsigned char* unsignedBytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

ByteArray arrayOf(const std::string& bytes) {
  return ByteArray(static_cast<unsigned int>(bytes.size()), bytes.data());
}

// Encoded text for decoding, as long as a size says, in whole groups of `group`.
std::string bytesFor(std::size_t encodedSize, std::size_t group, std::size_t bytesPerGroup) {
  return anyBytes(encodedSize / group * bytesPerGroup);
}

void addRadix64() {
  const char* task = "radix 64, encode";
  add(task, "hoplaunch", textSizes, [](std::size_t size) {
    return [bytes = arrayOf(anyBytes(size))] { return bytes.format(64); };
  });
  add(task, "OpenSSL", textSizes, [](std::size_t size) {
    return [bytes = anyBytes(size)] {
      buffer result = newBuffer((bytes.size() + 2) / 3 * 4 + 1);
      EVP_EncodeBlock(result.get(), unsignedBytes(bytes), static_cast<int>(bytes.size()));
      return result;
    };
  });
  add(task, "Abseil", textSizes, [](std::size_t size) {
    return [bytes = anyBytes(size)] { return absl::Base64Escape(bytes); };
  });
  add(task, "libb64", textSizes, [](std::size_t size) {
    return [bytes = anyBytes(size)] {
      buffer result = newBuffer(bytes.size() * 2 + 8);
      char* const out = reinterpret_cast<char*>(result.get());
      base64_encodestate state;
      base64_init_encodestate(&state);
      const int length =
          base64_encode_block(bytes.data(), static_cast<int>(bytes.size()), out, &state);
      base64_encode_blockend(out + length, &state);
      return result;
    };
  });

  task = "radix 64, decode";
  const auto encoded = [](std::size_t size) { return arrayOf(bytesFor(size, 4, 3)).format(64); };
  add(task, "hoplaunch", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] { return ByteArray(text.c_str(), 64); };
  });
  add(task, "OpenSSL", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] {
      buffer result = newBuffer(text.size() / 4 * 3);
      EVP_DecodeBlock(result.get(), unsignedBytes(text), static_cast<int>(text.size()));
      return result;
    };
  });
  add(task, "Abseil", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] {
      std::string result;
      absl::Base64Unescape(text, &result);
      return result;
    };
  });
  add(task, "libb64", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] {
      buffer result = newBuffer(text.size());
      base64_decodestate state;
      base64_init_decodestate(&state);
      base64_decode_block(text.data(), static_cast<int>(text.size()),
                          reinterpret_cast<char*>(result.get()), &state);
      return result;
    };
  });
}

void addRadix16() {
  const char* task = "radix 16, encode";
  add(task, "hoplaunch", textSizes, [](std::size_t size) {
    return [bytes = arrayOf(anyBytes(size))] { return bytes.format(16); };
  });
  add(task, "OpenSSL", textSizes, [](std::size_t size) {
    return [bytes = anyBytes(size)] {
      buffer result = newBuffer(bytes.size() * 2 + 1);
      OPENSSL_buf2hexstr_ex(reinterpret_cast<char*>(result.get()), bytes.size() * 2 + 1, nullptr,
                            unsignedBytes(bytes), bytes.size(), '\0');
      return result;
    };
  });
  add(task, "Abseil", textSizes, [](std::size_t size) {
    return [bytes = anyBytes(size)] { return absl::BytesToHexString(bytes); };
  });

  task = "radix 16, decode";
  const auto encoded = [](std::size_t size) { return arrayOf(bytesFor(size, 2, 1)).format(16); };
  add(task, "hoplaunch", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] { return ByteArray(text.c_str(), 16); };
  });
  add(task, "OpenSSL", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] {
      buffer result = newBuffer(text.size() / 2);
      OPENSSL_hexstr2buf_ex(result.get(), text.size() / 2, nullptr, text.c_str(), '\0');
      return result;
    };
  });
  add(task, "Abseil", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] { return absl::HexStringToBytes(text); };
  });
}

void addPercentEncode() {
  const char* task = "percent-encode";
  add(task, "hoplaunch", textSizes,
      [](std::size_t size) { return [text = linkText(size)] { return URIescape(text); }; });
  add(task, "GLib", textSizes, [](std::size_t size) {
    return [text = linkText(size)] {
      return std::unique_ptr<char, decltype(&g_free)>(
          g_uri_escape_string(text.c_str(), nullptr, FALSE), &g_free);
    };
  });
  add(task, "libcurl", textSizes, [](std::size_t size) {
    return [text = linkText(size)] {
      return std::unique_ptr<char, decltype(&curl_free)>(
          curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size())), &curl_free);
    };
  });
  add(task, "uriparser", textSizes, [](std::size_t size) {
    return [text = linkText(size)] {
      buffer result = newBuffer(text.size() * 3 + 1);
      uriEscapeExA(text.data(), text.data() + text.size(), reinterpret_cast<char*>(result.get()),
                   URI_FALSE, URI_FALSE);
      return result;
    };
  });
}

void addPercentDecode() {
  const char* task = "percent-decode";
  const auto encoded = [](std::size_t size) {
    std::string text = URIescape(linkText(size));
    text.resize(size);
    return text.substr(0, text.size() - 2) + "ab";  // not in the middle of an escape
  };
  add(task, "hoplaunch", textSizes,
      [encoded](std::size_t size) { return [text = encoded(size)] { return URIunEscape(text); }; });
  add(task, "GLib", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] {
      return std::unique_ptr<char, decltype(&g_free)>(g_uri_unescape_string(text.c_str(), nullptr),
                                                      &g_free);
    };
  });
  add(task, "libcurl", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] {
      int length = 0;
      return std::unique_ptr<char, decltype(&curl_free)>(
          curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &length),
          &curl_free);
    };
  });
  add(task, "uriparser", textSizes, [encoded](std::size_t size) {
    return [text = encoded(size)] {
      std::string result = text;
      result.resize(static_cast<std::size_t>(uriUnescapeInPlaceA(result.data()) - result.data()));
      return result;
    };
  });
}

// Every sixteenth character has two bytes, the others one.
std::string accentedText(std::size_t size) {
  std::string result;
  while (result.size() < size) {
    result += "sch\xC3\xB6ne words 1234";
  }
  result.resize(size / 17 * 17);
  return result;
}

void addUTF8() {
  for (const bool accented : {false, true}) {
    const char* const task = accented ? "UTF-8 check, accented" : "UTF-8 check, ASCII";
    const auto input = [accented](std::size_t size) {
      return accented ? accentedText(size + 1) : linkText(size);
    };
    add(task, "hoplaunch", textSizes, [input](std::size_t size) {
      return [text = input(size)] {
        return validUTF8(text.data(), static_cast<int>(text.size()), false);
      };
    });
    add(task, "GLib", textSizes, [input](std::size_t size) {
      return
          [text = input(size)] { return g_utf8_validate_len(text.data(), text.size(), nullptr); };
    });
  }
}

}  // namespace

void addTextBenchmarks() {
  addRadix64();
  addRadix16();
  addPercentEncode();
  addPercentDecode();
  addUTF8();
}
