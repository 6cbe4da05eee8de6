#include "ModelWriter.hpp"

#include <algorithm>
#include <tuple>
#include <unordered_set>

namespace brant::zero::io {

ContentEntries entriesOf(Body const& owner, schema::PropertyRow const& row,
                         ReferenceSequence const& members) {
    ContentEntries entries;
    entries.reserve(members.size());
    std::unordered_set<Body const*> seen;
    for (std::size_t i = 0; i < members.size(); ++i) {
        Body const* element = members.slot(i);
        if (isWritten(element))
            entries.push_back({element, isNested(owner, row, *element) && seen.insert(element).second});
    }
    return entries;
}

ContentEntries entriesOf(ReferenceMap const& members) {
    ContentEntries entries;
    std::vector<std::pair<ProxyId, Body const*>> proxies;
    for (ModelElement const& member : members.getAllValuesAndProxies()) {
        if (!member) continue;
        if (member.get()->isProxy())
            proxies.emplace_back(member.get()->getProxyId(), member.get());
        else
            entries.push_back({member.get(), true});
    }
    // Their table has no order of its own.
    std::sort(proxies.begin(), proxies.end(), [](auto const& a, auto const& b) {
        auto const parts = [](ProxyId const& id) {
            return std::tuple(std::u16string_view(id.model), std::u16string_view(id.element), id.isExternal(),
                              id.isExternal() ? std::u16string_view(*id.external) : std::u16string_view());
        };
        return parts(a.first) < parts(b.first);
    });
    for (auto const& [id, proxy] : proxies)
        entries.push_back({proxy, false});
    return entries;
}

} // namespace brant::zero::io
