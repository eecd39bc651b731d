#include "bench/peers/protobuf.h"

#include <google/protobuf/descriptor.h>

#include "bench/handwritten/decode.h"

namespace bench {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

void fill(Message& message, reader in);

// Takes the next value as the field, or as one more element of it.
void fill_field(Message& message, const FieldDescriptor& field, reader& in) {
    const auto& reflection = *message.GetReflection();
    reader contents;
    int32_t number = 0;
    switch (field.type()) {
        case FieldDescriptor::TYPE_INT32:
            in.integer(number);
            if (field.is_repeated())
                reflection.AddInt32(&message, &field, number);
            else
                reflection.SetInt32(&message, &field, number);
            break;
        case FieldDescriptor::TYPE_STRING:
        case FieldDescriptor::TYPE_BYTES:
            in.contents(field.type() == FieldDescriptor::TYPE_STRING ? tag_text : tag_octets, contents);
            reflection.SetString(&message, &field, std::string(contents.begin(), contents.end()));
            break;
        default:
            in.contents(tag_sequence, contents);
            fill(field.is_repeated() ? *reflection.AddMessage(&message, &field)
                                     : *reflection.MutableMessage(&message, &field),
                 contents);
    }
}

void fill(Message& message, reader in) {
    for (int i = 0; i < message.GetDescriptor()->field_count(); ++i) {
        const FieldDescriptor& field = *message.GetDescriptor()->field(i);
        if (field.is_repeated()) {
            reader elements;
            in.contents(tag_sequence, elements);
            while (!elements.at_end())
                fill_field(message, field, elements);
        } else if (field.type() != FieldDescriptor::TYPE_MESSAGE || in.next_is(tag_sequence)) {
            fill_field(message, field, in);
        }
    }
}

}  // namespace

void fill_message(Message& message, octets sequence) {
    reader in(sequence.data, sequence.length), contents;
    in.contents(tag_sequence, contents);
    fill(message, contents);
}

}  // namespace bench
