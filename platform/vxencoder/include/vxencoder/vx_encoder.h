#pragma once

#include <cstddef>
#include <memory>

// Builds one outgoing barrage text: a sequence of items "key=value;" in the order they were
// added, with "\", "=" and ";" inside keys and values escaped as "\\", "\e" and "\s".
//
// The encoder writes into a buffer of the size given at construction and never past it. The
// text and its terminating NUL must fit; an item that does not fit (or an empty or null key,
// or a null value) puts the encoder into a failed state for good, and from then on
// GetResult() returns an empty text and AddItem() returns false.
class vxEncoder {
public:
    explicit vxEncoder(std::size_t bufferSize);
    ~vxEncoder();
    vxEncoder(const vxEncoder&) = delete;
    vxEncoder& operator=(const vxEncoder&) = delete;

    // Appends one item; false when it was rejected (the encoder has then failed).
    bool AddItem(const char* key, const char* value);

    // The encoded text, owned by the encoder and valid until the next AddItem or destruction.
    // Empty after a failure or before the first item.
    const char* GetResult() const;

    bool Failed() const { return failed_; }
    std::size_t Length() const { return failed_ ? 0 : length_; }

private:
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_;
    std::size_t length_ = 0;
    bool failed_ = false;
};
