// Protocol buffers, with every message on the heap and with an arena for each record. They do not speak BER: their
// records are filled from the library's octets by reflection.
#pragma once

#include <google/protobuf/arena.h>
#include <records.pb.h>

#include <memory>

#include "bench/peers/ber_codec.h"

namespace bench {

constexpr const char* protobuf = "protobuf";
constexpr const char* protobuf_arena = "protobuf, arena";

// fill_message makes a message from a BER SEQUENCE of its fields in order.
void fill_message(google::protobuf::Message& message, octets sequence);

template <class Codec>
struct protobuf_base : ber_codec<Codec> {
    static constexpr bool same = false;

    template <class Value>
    static void make(Value& value, octets reference) {
        fill_message(Codec::message(value), reference);
    }
    template <class Value>
    static bool encode(heap_block& block, Value& value) {
        const auto& message = Codec::message(value);
        const size_t length = message.ByteSizeLong();
        block = {static_cast<unsigned char*>(std::malloc(length)), length};
        return block.data != nullptr && message.SerializeWithCachedSizesToArray(block.data) == block.data + length;
    }
    template <class Value>
    static bool decode(octets in, Value& value) {
        return Codec::message(value).ParseFromArray(in.data, static_cast<int>(in.length));
    }
};

template <class T>
struct protobuf_codec : protobuf_base<protobuf_codec<T>> {
    using base = protobuf_base<protobuf_codec<T>>;
    using base::release;
    using value = std::unique_ptr<T>;

    static T& message(value& record) {
        if (record == nullptr) record = std::make_unique<T>();
        return *record;
    }
    static void release(value& record) { record.reset(); }
};

template <class T>
struct protobuf_arena_codec : protobuf_base<protobuf_arena_codec<T>> {
    using base = protobuf_base<protobuf_arena_codec<T>>;
    using base::release;
    struct value {
        std::unique_ptr<google::protobuf::Arena> arena;
        T* message = nullptr;
    };

    static T& message(value& record) {
        if (record.message == nullptr) {
            record.arena = std::make_unique<google::protobuf::Arena>();
            record.message = google::protobuf::Arena::CreateMessage<T>(record.arena.get());
        }
        return *record.message;
    }
    static void release(value& record) { record = value(); }
};

}  // namespace bench
