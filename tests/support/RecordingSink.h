// A sink that keeps what a package reader gives it.
#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Archive/IExtractOutFile.h"

namespace support {

/// Keeps every item with its content and how it was called; can refuse an item, or its bytes.
class RecordingSink : public IExtractOutFile {
public:
    struct Item {
        std::string name, content;
        int writes = 0;
        bool closed = false;
    };

    bool open(const std::string& name, bool flag) override {
        threads.push_back(std::this_thread::get_id());
        flags.push_back(flag);
        if (onOpen) onOpen(name);
        if (name == refusedItem) return false;
        items.push_back({name, {}, 0, false});
        return true;
    }
    bool write(const char* data, unsigned int size) override {
        items.back().content.append(data, size);
        ++items.back().writes;
        return takesBytes;
    }
    bool close() override {
        items.back().closed = true;
        return closeResult;
    }
    void setError(ErrorCode code) override { errors.push_back(code); }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const Item& item : items) all.push_back(item.name);
        return all;
    }
    const Item* find(const std::string& name) const {
        for (const Item& item : items) {
            if (item.name == name) return &item;
        }
        return nullptr;
    }
    std::string content(const std::string& name) const {
        const Item* item = find(name);
        return item != nullptr ? item->content : "(no such item)";
    }

    std::vector<Item> items;
    std::vector<ErrorCode> errors;
    std::vector<std::thread::id> threads;  ///< of each open
    std::vector<bool> flags;
    std::string refusedItem = "(none)";  ///< open gives false for this name
    bool takesBytes = true;              ///< result of write
    bool closeResult = true;
    std::function<void(const std::string& name)> onOpen;
};

}  // namespace support
