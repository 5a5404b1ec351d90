// A message that is an exception's.
#pragma once

#include "host/messages/Message.h"

namespace host {

// The class of an exception, and its message.
struct Raising {
    std::string_view exception;
    Said message;
};

struct RaisedMessage {
    std::string_view exception;  // the class
    Message message;
    std::string_view example;  // a script that ends with it; empty where it takes more than a script

    template <class... Parts>
    Raising operator()(const Parts&... parts) const {
        return {exception, message(parts...)};
    }
};

}  // namespace host
