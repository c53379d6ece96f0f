#include "tavctl/names/nameLoss.h"

#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <map>

namespace tavctl {

std::vector<NameLoss> lostNames(const NameFile& stored, const Survey* survey,
                                const NameFile& others) {
    std::map<std::string, const NameEntry*> bySlot;
    for (const NameEntry& other : others.entries())
        bySlot.emplace(other.slotPath, &other);
    std::vector<NameLoss> losses;
    for (const NameEntry& entry : stored.entries()) {
        if (entry.terminalName.empty() || entry.model.empty())
            continue; // no device is ever given this
        if (survey != nullptr && presenceOf(entry, *survey) != NamePresence::present)
            continue;
        const auto found = bySlot.find(entry.slotPath);
        const bool isSameModel = found != bySlot.end() && found->second->model == entry.model;
        std::string then = isSameModel ? found->second->terminalName : std::string();
        if (then != entry.terminalName)
            losses.push_back({entry, std::move(then)});
    }
    return losses;
}

std::string lossesAsText(const std::vector<NameLoss>& losses) {
    constexpr std::size_t kMost = 20;
    std::vector<std::string> texts;
    for (const NameLoss& loss : losses) {
        if (texts.size() == kMost) {
            texts.push_back(fmt::format("and {} more", losses.size() - kMost));
            break;
        }
        const std::string fate = loss.then.empty() ? std::string("would lose its name")
                                                   : fmt::format("would be named {}", loss.then);
        texts.push_back(fmt::format("{} ({}, {}) {}", loss.entry.terminalName, loss.entry.model,
                                    loss.entry.slotPath, fate));
    }
    return separated(texts, ", ");
}

} // namespace tavctl
