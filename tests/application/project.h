// The application's own header of this name: a project of a planning office.

#ifndef APPLICATION_PROJECT_H
#define APPLICATION_PROJECT_H

struct office_project {
    const char *client;
    double fee;
};

#endif
