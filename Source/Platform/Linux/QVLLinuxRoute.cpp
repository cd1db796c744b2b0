#include "QVLLinuxRoute.h"

#include "QVLReachabilityTarget.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

class NetlinkSocket {
public:
    NetlinkSocket() : m_descriptor(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)) {}
    NetlinkSocket(const NetlinkSocket&) = delete;
    NetlinkSocket& operator=(const NetlinkSocket&) = delete;
    ~NetlinkSocket() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

struct Question {
    nlmsghdr header{};
    rtmsg route{};
    rtattr destination{};
    std::array<std::uint8_t, 16> bytes{};
};
static_assert(sizeof(Question) == NLMSG_SPACE(sizeof(rtmsg)) + RTA_SPACE(16), "the kernel expects no gaps");

/// Wide enough for one answer with all of its attributes.
struct Answer {
    alignas(nlmsghdr) std::array<char, 8192> bytes{};
    std::size_t length = 0;
};

Question questionFor(const QVLSocketAddress& address) {
    const bool isIPv4 = address.family == QVLSocketAddress::Family::IPv4;
    const unsigned short addressLength = isIPv4 ? 4 : 16;
    Question question;
    question.header.nlmsg_type = RTM_GETROUTE;
    question.header.nlmsg_flags = NLM_F_REQUEST;
    question.destination.rta_type = RTA_DST;
    question.destination.rta_len = static_cast<unsigned short>(RTA_LENGTH(addressLength));
    question.header.nlmsg_len = NLMSG_LENGTH(sizeof(rtmsg)) + question.destination.rta_len;
    question.route.rtm_family = isIPv4 ? AF_INET : AF_INET6;
    question.route.rtm_dst_len = static_cast<unsigned char>(addressLength * 8);
    question.bytes = address.bytes;
    return question;
}

/// The kernel answers while it takes the question, so nothing is waited for.
bool ask(const NetlinkSocket& netlink, const Question& question, Answer& answer) {
    if (send(netlink.descriptor(), &question, question.header.nlmsg_len, MSG_NOSIGNAL) < 0) {
        return false;
    }
    ssize_t length = 0;
    do {
        length = recv(netlink.descriptor(), answer.bytes.data(), answer.bytes.size(), MSG_DONTWAIT);
    } while (length < 0 && errno == EINTR);
    answer.length = length > 0 ? static_cast<std::size_t>(length) : 0;
    return length > 0;
}

bool isPointToPoint(const NetlinkSocket& netlink, unsigned interfaceIndex) {
    ifreq request{};
    return if_indextoname(interfaceIndex, request.ifr_name) &&
           ioctl(netlink.descriptor(), SIOCGIFFLAGS, &request) == 0 &&
           (static_cast<unsigned short>(request.ifr_flags) & IFF_POINTOPOINT) != 0;
}

std::uint32_t flagsOfUnicastRoute(const NetlinkSocket& netlink, const nlmsghdr& header) {
    bool hasGateway = false;
    unsigned interfaceIndex = 0;
    auto remaining = RTM_PAYLOAD(&header);
    const auto* const route = static_cast<const rtmsg*>(NLMSG_DATA(&header));
    for (const rtattr* attribute = RTM_RTA(route); RTA_OK(attribute, remaining);
         attribute = RTA_NEXT(attribute, remaining)) {
        if (attribute->rta_type == RTA_GATEWAY || attribute->rta_type == RTA_VIA) {
            hasGateway = true;
        } else if (attribute->rta_type == RTA_OIF && RTA_PAYLOAD(attribute) == sizeof interfaceIndex) {
            std::memcpy(&interfaceIndex, RTA_DATA(attribute), sizeof interfaceIndex);
        }
    }
    return kQVLReachabilityFlagsReachable | (hasGateway ? 0U : kQVLReachabilityFlagsIsDirect) |
           (isPointToPoint(netlink, interfaceIndex) ? kQVLReachabilityFlagsTransientConnection : 0U);
}

std::uint32_t flagsOfRoute(const NetlinkSocket& netlink, const nlmsghdr& header) {
    switch (static_cast<const rtmsg*>(NLMSG_DATA(&header))->rtm_type) {
    case RTN_LOCAL:
        return kQVLReachabilityFlagsReachable | kQVLReachabilityFlagsIsLocalAddress;
    case RTN_UNICAST:
    case RTN_ANYCAST:
    case RTN_MULTICAST:
    case RTN_BROADCAST:
        return flagsOfUnicastRoute(netlink, header);
    default:
        return 0;
    }
}

/// Which refusals mean that there is no way, and not that the question could not be put.
bool meansNoRoute(int error) {
    return error == ENETUNREACH || error == EHOSTUNREACH || error == EACCES || error == EINVAL || error == ENETDOWN;
}

} // namespace

std::optional<std::uint32_t> QVLLinuxRouteFlags(const QVLSocketAddress& address) {
    const NetlinkSocket netlink;
    Answer answer;
    if (netlink.descriptor() < 0 || !ask(netlink, questionFor(address), answer)) {
        return std::nullopt;
    }
    const auto& header = *reinterpret_cast<const nlmsghdr*>(answer.bytes.data());
    if (!NLMSG_OK(&header, answer.length)) {
        return std::nullopt;
    }
    if (header.nlmsg_type == RTM_NEWROUTE) {
        return flagsOfRoute(netlink, header);
    }
    const bool isRefusal = header.nlmsg_type == NLMSG_ERROR && NLMSG_PAYLOAD(&header, 0) >= sizeof(nlmsgerr);
    if (isRefusal && meansNoRoute(-static_cast<const nlmsgerr*>(NLMSG_DATA(&header))->error)) {
        return 0;
    }
    return std::nullopt;
}
