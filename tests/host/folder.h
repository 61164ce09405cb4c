// A temporary folder with files of a test, and what the reader makes of them.

#ifndef TESTS_HOST_FOLDER_H
#define TESTS_HOST_FOLDER_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "host/input/network_file.h"
#include "support/workfolder.h"

using Lines = std::vector<std::string>;

class Folder : public TemporaryFolder {
public:
    std::string write(const std::string &name, const std::string &text) const
    {
        std::ofstream(file(name), std::ios::binary) << text;
        return file(name);
    }

    // A socket: a file that exists and that nobody can open.
    void make_socket(const std::string &name) const
    {
        sockaddr_un address = sockaddr_un();
        address.sun_family = AF_UNIX;
        file(name).copy(address.sun_path, sizeof address.sun_path - 1);
        const int handle = socket(AF_UNIX, SOCK_STREAM, 0);
        if (bind(handle, (const sockaddr *)&address, sizeof address) != 0) abort();
        close(handle);
    }

    // Reads net.inp; returns the lines of its faults without the folder's path.
    Lines read(const std::string &name = "net.inp")
    {
        accepted = vornhost::read_network(file(name), model, faults);
        Lines lines = faults.lines();
        for (std::string &line : lines) shorten(line);
        return lines;
    }

    void shorten(std::string &line) const
    {
        const std::string prefix = path + "/";
        for (size_t at = line.find(prefix); at != std::string::npos; at = line.find(prefix, at))
            line.erase(at, prefix.size());
    }

    vornhost::Model model;
    vornhost::Faults faults;
    bool accepted = false;
};

// Faults of a network file with this text.
inline Lines faults_of(const std::string &text)
{
    Folder folder;
    folder.write("net.inp", text);
    return folder.read();
}

// The model of a network file.
inline vornhost::Model model_of(const std::string &text, Lines *faults)
{
    Folder folder;
    folder.write("net.inp", text);
    *faults = folder.read();
    return std::move(folder.model);
}

// The model of a network file that has no faults.
inline vornhost::Model model_of(const std::string &text)
{
    Lines faults;
    vornhost::Model model = model_of(text, &faults);
    EXPECT_EQ(faults, Lines());
    return model;
}

#endif
