// SPDX-License-Identifier: BSD-3-Clause
// One read-only handler for each region; all variables of a packet that fall into it are answered as one batch.

#include "frontend.h"

#include "event_loop.h"
#include "held_questions.h"
#include "library_context.h"
#include "packet.h"
#include "stream_clients.h"
#include "varbind.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <list>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

namespace ipmib::agent
{

class Frontend::Impl
{
  public:
    Impl(host::Catalogue &catalogue, host::Instances &instances)
        : catalogue_(catalogue), instances_(instances), platformEvents_(catalogue.platform(), &instances),
          held_(instances)
    {
        StreamClients::all().onClose([this](const netsnmp_transport &client) { held_.forget(&client); });
    }

    ~Impl()
    {
        StreamClients::all().onClose({});
        held_.release(nullptr);
        while (!places_.empty()) {
            leave(places_.begin()->first);
        }
    }

    void whenPlatformHasWorked(std::function<void()> done) { platformEvents_.whenDone(std::move(done)); }

    int add(const host::ServedTable &table, host::OidView root, int priority, const Context &context)
    {
        instances_.select(context.instance);
        table.source->start();
        LibraryOid place(root);
        netsnmp_handler_registration *registration = netsnmp_create_handler_registration(
            table.name, handle, place.data(), place.size(), HANDLER_CAN_RONLY | HANDLER_CAN_GETBULK);
        if (registration == nullptr) {
            throw std::runtime_error("out of memory");
        }
        registration->priority = priority;
        if (!context.name.empty()) {
            registration->contextName = strdup(context.name.c_str()); // the library frees it
        }
        // Of a scalar the place may be its instance.
        std::list<ServedRegion> &served = places_[context.name].served;
        ServedRegion &region = served.emplace_back(ServedRegion{
            this, table.source, table.isScalar() ? table.root : host::Oid(root), registration, context.instance});
        registration->handler->myvoid = &region;
        const int answer = netsnmp_register_handler(registration);
        if (answer != MIB_REGISTERED_OK) {
            served.pop_back(); // the library has freed the registration
        }
        return answer;
    }

    void remove(host::OidView root, int priority, const std::string &context)
    {
        const LibraryOid place(root);
        std::list<ServedRegion> &served = places_[context].served;
        const auto found = std::ranges::find_if(served, [&](const ServedRegion &region) {
            return region.registration->priority == priority &&
                   snmp_oid_compare(region.registration->rootoid, region.registration->rootoid_len, place.data(),
                                    place.size()) == 0;
        });
        if (found != served.end()) {
            held_.release(found->source);
            unregister(*found, context);
            served.erase(found);
        }
    }

    void serve(const std::vector<const host::ServedTable *> &tables, const Context &context)
    {
        std::vector<const host::ServedTable *> &whole = places_[context.name].whole;
        for (const host::ServedTable *table : whole) {
            if (std::ranges::find(tables, table) == tables.end()) {
                remove(table->root.view(), DEFAULT_MIB_PRIORITY, context.name);
            }
        }
        for (const host::ServedTable *table : tables) {
            if (std::ranges::find(whole, table) == whole.end() &&
                add(*table, table->root.view(), DEFAULT_MIB_PRIORITY, context) != MIB_REGISTERED_OK) {
                throw std::runtime_error(std::string("cannot register ") + table->name +
                                         (context.name.empty() ? "" : " in context " + context.name));
            }
        }
        whole = tables;
    }

    void leave(std::string context)
    {
        const auto place = places_.find(context);
        if (place == places_.end()) {
            return;
        }
        if (!held_.empty() && !place->second.served.empty()) {
            leaving_ = place->second.served.front().instance; // which is not to be waited for in its next table, either
            held_.releaseAllOf(*leaving_);
            netsnmp_check_outstanding_agent_requests(); // packets that are answered now are done with
            leaving_.reset();
        }
        for (const ServedRegion &region : place->second.served) {
            unregister(region, context);
        }
        places_.erase(place);
        if (!context.empty()) {
            forgetContext(context);
        }
    }

  private:
    struct ServedRegion {
        Impl *frontend;
        host::Source *source;
        host::Oid root;
        netsnmp_handler_registration *registration;
        std::size_t instance;
    };
    // What is served in one context.
    struct Place {
        std::list<ServedRegion> served; // handlers point into it
        std::vector<const host::ServedTable *> whole;
    };

    // With copies: the library looks at the root and the context after it has freed the registration.
    static void unregister(const ServedRegion &region, const std::string &context)
    {
        const netsnmp_handler_registration &own = *region.registration;
        std::vector<oid> root(own.rootoid, own.rootoid + own.rootoid_len);
        unregister_mib_context(root.data(), root.size(), own.priority, own.range_subid, own.range_ubound,
                               context.empty() ? nullptr : context.c_str());
    }

    static int handle(netsnmp_mib_handler *handler, netsnmp_handler_registration *registration,
                      netsnmp_agent_request_info *info, netsnmp_request_info *requests)
    {
        const auto *region = static_cast<const ServedRegion *>(handler->myvoid);
        Impl &self = *region->frontend;
        self.instances_.select(region->instance);
        beginPacketOnce(self.catalogue_, info, std::exchange(self.begun_, region->instance) != region->instance);
        if (self.leaving_ != region->instance && self.held_.mustWait(*region->source)) {
            self.hold(*region, *handler, registration, info, requests);
        } else {
            self.answer(*region, info, requests);
        }
        return SNMP_ERR_NOERROR;
    }

    // The library takes up the packet again when none of its variables is delegated any more. It would then send an
    // answer by way of the session that the packet has come from, whose memory it has given back if the client is gone
    // by then: such a packet must not reach it.
    void hold(const ServedRegion &region, netsnmp_mib_handler &handler, netsnmp_handler_registration *registration,
              netsnmp_agent_request_info *info, netsnmp_request_info *requests)
    {
        netsnmp_delegated_cache *const packet =
            netsnmp_create_delegated_cache(&handler, registration, info, requests, nullptr);
        delegate(requests, 1);
        ++packets_[info->asp].questions;
        const auto release = [this, &region, packet, from = info->asp](bool isWanted) {
            HeldPacket &held = packets_.at(from);
            held.isOrphan = held.isOrphan || !isWanted || snmp_sess_pointer(from->session) == nullptr;
            if (!held.isOrphan) {
                delegate(packet->requests, 0);
                clearAnswers(*packet);
                begun_ = region.instance;
                catalogue_.beginPacket(); // others may have begun since
                answer(region, packet->reqinfo, packet->requests);
            }
            netsnmp_free_delegated_cache(packet);
            if (--held.questions == 0) {
                if (held.isOrphan) {
                    netsnmp_remove_and_free_agent_snmp_session(from);
                }
                packets_.erase(from);
            }
        };
        held_.hold(*region.source, region.instance, release,
                   snmp_sess_transport(snmp_sess_pointer(info->asp->session)));
    }

    // The library has given up what it saw unanswered of a get.
    static void clearAnswers(const netsnmp_delegated_cache &packet)
    {
        for (netsnmp_request_info *request = packet.requests; request != nullptr; request = request->next) {
            if (packet.reqinfo->mode == MODE_GET) {
                request->requestvb->type = ASN_NULL;
            }
        }
    }

    static void delegate(netsnmp_request_info *requests, int isDelegated)
    {
        for (; requests != nullptr; requests = requests->next) {
            requests->delegated = isDelegated;
        }
    }

    void answer(const ServedRegion &region, netsnmp_agent_request_info *info, netsnmp_request_info *requests)
    {
        const bool isGet = info->mode == MODE_GET;
        getExactly(region,
                   collect(requests,
                           [isGet](const netsnmp_request_info &request) {
                               return request.requestvb->type == ASN_NULL && (isGet || request.inclusive != 0);
                           }),
                   isGet);
        if (isGet) {
            return;
        }
        const std::span<host::Variable> batch = collect(requests, isUnanswered);
        region.source->getNext(batch, region.root.view());
        deliver(batch);
        if (info->mode == MODE_GETBULK) {
            repeat(region, *info, requests);
        }
    }

    static bool isUnanswered(const netsnmp_request_info &request) { return request.requestvb->type == ASN_NULL; }
    static bool isNextRepetition(const netsnmp_request_info &request)
    {
        return request.requestvb->type == ASN_PRIV_RETRY;
    }

    // Also for a get-next whose very identifier would be an answer; what is not there goes on to the successor.
    void getExactly(const ServedRegion &region, std::span<host::Variable> batch, bool isGet)
    {
        if (batch.empty()) {
            return;
        }
        region.source->get(batch);
        for (std::size_t i = 0; i < batch.size(); ++i) {
            if (isGet || batch[i].status == host::Status::ok) {
                batch[i].name = asked_[i].name;
                deliver(*asked_[i].request, batch[i]);
            }
        }
    }

    // Answers the further repetitions. The library would ask for them one at a time, with all its bookkeeping for each;
    // but it checks the view for each, and so it shall where a view does not hold the whole region.
    void repeat(const ServedRegion &region, netsnmp_agent_request_info &info, netsnmp_request_info *requests)
    {
        LibraryOid root(region.root.view());
        const bool allVisible = netsnmp_acm_check_subtree(info.asp->pdu, root.data(), root.size()) == VACM_SUCCESS;
        for (;;) {
            netsnmp_bulk_to_next_fix_requests(requests); // marks the next repetition of each variable
            const std::span<host::Variable> batch = allVisible ? collect(requests, isNextRepetition) : batchOf(0);
            if (batch.empty()) {
                return;
            }
            region.source->getNext(batch, region.root.view());
            deliver(batch);
        }
    }

    std::span<host::Variable> batchOf(std::size_t count) { return {variables_.data(), count}; }

    // Gathers the variables that are not done with and wanted.
    template <typename Predicate>
    std::span<host::Variable> collect(netsnmp_request_info *requests, Predicate isWanted)
    {
        std::size_t count = 0;
        for (; requests != nullptr; requests = requests->next) {
            if (requests->processed != 0 || !isWanted(*requests)) {
                continue;
            }
            if (count == asked_.size()) {
                asked_.emplace_back();
                variables_.emplace_back();
            }
            Asked &asked = asked_[count];
            asked.request = requests;
            assignOid(asked.name, {requests->requestvb->name, requests->requestvb->name_length});
            variables_[count].asked = asked.name.view();
            ++count;
        }
        return batchOf(count);
    }

    void deliver(std::span<const host::Variable> batch)
    {
        for (std::size_t i = 0; i < batch.size(); ++i) {
            deliver(*asked_[i].request, batch[i]);
        }
    }

    static void deliver(netsnmp_request_info &request, const host::Variable &variable)
    {
        switch (variable.status) {
        case host::Status::ok:
            if (request.agent_req_info->mode != MODE_GET) {
                setName(*request.requestvb, variable.name.view());
            }
            setValue(*request.requestvb, variable.value);
            break;
        case host::Status::noSuchObject:
            netsnmp_request_set_error(&request, SNMP_NOSUCHOBJECT);
            break;
        case host::Status::noSuchInstance:
            netsnmp_request_set_error(&request, SNMP_NOSUCHINSTANCE);
            break;
        case host::Status::endOfRegion: // left unanswered, the library asks the registration that follows
            request.requestvb->type = ASN_NULL;
            break;
        case host::Status::genErr:
            netsnmp_request_set_error(&request, SNMP_ERR_GENERR);
            break;
        }
    }

    struct HeldPacket {
        unsigned questions = 0;
        bool isOrphan = false; // nobody is there for the answer
    };

    struct Asked {
        netsnmp_request_info *request = nullptr;
        host::Oid name;
    };

    host::Catalogue &catalogue_;
    host::Instances &instances_;
    PlatformEvents platformEvents_;
    std::map<std::string, Place> places_; // by context
    HeldQuestions held_;
    std::optional<std::size_t> leaving_;                    // the instance of a context that ends
    std::size_t begun_ = host::Instances::first;            // the instance that the latest packet asks
    std::map<netsnmp_agent_session *, HeldPacket> packets_; // of questions that are held
    // The batch in work; both keep the size of the largest so far. Names stay where they are while it grows.
    std::deque<Asked> asked_;
    std::vector<host::Variable> variables_;
};

Frontend::Frontend(host::Catalogue &catalogue, host::Instances &instances)
    : impl_(std::make_unique<Impl>(catalogue, instances))
{
}

Frontend::~Frontend() = default;

void Frontend::whenPlatformHasWorked(std::function<void()> done)
{
    impl_->whenPlatformHasWorked(std::move(done));
}

int Frontend::add(const host::ServedTable &table, host::OidView root, int priority)
{
    return impl_->add(table, root, priority, {});
}

void Frontend::remove(host::OidView root, int priority)
{
    impl_->remove(root, priority, "");
}

void Frontend::serve(const std::vector<const host::ServedTable *> &tables, const Context &context)
{
    impl_->serve(tables, context);
}

void Frontend::leave(const std::string &context)
{
    impl_->leave(context);
}

} // namespace ipmib::agent
