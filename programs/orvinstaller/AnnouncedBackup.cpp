#include "AnnouncedBackup.h"

#include "Plan.h"

AnnouncedBackup::ErrorInfo AnnouncedBackup::backup(const std::string& name, const std::string&) {
    const std::string item = plainName(name);
    if (mToReplace.contains(item)) {
        mReplaced.insert(item);
    } else if (mToAdd.contains(item)) {
        mAdded.insert(item);
    } else {
        return {Public::Base::ErrorCode_OutputOpen, name + " was not announced"};
    }
    return {};
}

void AnnouncedBackup::announce(const Journal& journal) {
    using Kind = JournalEntry::Kind;
    for (const auto& entry : journal.entries) {
        if (entry.kind == Kind::AddedFile) mToAdd.insert(entry.name);
        if (entry.kind == Kind::ReplacedFile || entry.kind == Kind::ReplacedLink) mToReplace.insert(entry.name);
    }
}
