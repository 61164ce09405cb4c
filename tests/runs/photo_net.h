// Two fixed stations take the same targets with a camera of focal length 1.

#ifndef TESTS_RUNS_PHOTO_NET_H
#define TESTS_RUNS_PHOTO_NET_H

#include <stdio.h>
#include <string.h>

#include <string>

#include "support/network.h"

const int NTARGET = 5;
const double PLACE[NTARGET][3] = {{-4, -3, 20}, {5, -2, 22}, {3, 6, 18}, {-2, 5, 25}, {1, 1, 21}};

// Writes the images into the working folder; unfilled adds a line with one number to the second.
inline void photo_net(Network &n, bool unfilled)
{
    n.p.iphoto = 1;
    n.p.suv = 1e-4;
    const char *stations[2] = {"S1      ", "S2      "}, *files[2] = {"one.txt", "two.txt"};
    for (int i = 0; i < NTARGET; i++) {
        const std::string name = std::string("T") + (char)('1' + i) + "      ";
        n.target(name.c_str(), PLACE[i][0] + 0.01, PLACE[i][1] - 0.01, PLACE[i][2]);
    }
    camera_input cam = camera_input();
    cam.status = 1;
    strcpy(cam.name, "CAM");
    cam.pu = cam.pv = cam.p[0] = 1.0;
    for (int k = 0; k < 10; k++) cam.ip[k] = k < 3 ? CODE_FIXED : CODE_ABSENT;
    n.cameras.push_back(cam);
    for (int s = 0; s < 2; s++) {
        station_input &station = n.station(stations[s], 10.0 * s, 0, 0);
        for (int c = 0; c < 3; c++) station.ix[c] = station.ir[c] = CODE_FIXED;
        FILE *f = fopen(files[s], "w");
        for (int i = 0; i < NTARGET; i++)
            fprintf(f, "T%d      %.9f %.9f 1e-4 1e-4\n", i + 1, (PLACE[i][0] - 10.0 * s) / PLACE[i][2],
                    PLACE[i][1] / PLACE[i][2]);
        if (s == 1 && unfilled) fprintf(f, "T1      1.5\n");
        fclose(f);
        image_input im = image_input();
        im.status = 1;
        strcpy(im.file, files[s]);
        strcpy(im.station, stations[s]);
        strcpy(im.camera, "CAM");
        n.images.push_back(im);
    }
}

#endif
