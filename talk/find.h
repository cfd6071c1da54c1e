// Which printers there are: on USB, on the network and in CUPS's queues. Looking sends nothing to any of them.
#pragma once

#include <string>
#include <vector>

namespace talk {

struct Found {
    std::string place;  // "usb", "network", "queue"
    std::string name;
    std::string device;  // address for -d
    std::string model;   // of the catalogue, empty when it has none like this
};

// The model that a device id ("MFG:Acme;MDL:QX-100;...") names, by brand and model name; empty when unknown.
std::string model_of_device_id(const std::string &id);

// Printers that the kernel's USB driver has; `folder` is /sys/class/usbmisc.
std::vector<Found> find_usb(const std::string &folder);

// From what `avahi-browse -rpt _pdl-datastream._tcp` writes.
std::vector<Found> read_avahi(const std::string &text);

// Runs avahi-browse where it is installed, no longer than this.
std::vector<Found> find_network(int timeout_ms);

}  // namespace talk
