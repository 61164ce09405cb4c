# Writes the HTML page of the results as a C++ source: the skeleton with its style sheet and its modules in it.
#   cmake -DFOLDER=host/results/page -DOUTPUT=page_text.cpp -P page.cmake
# Modules stand in the order of use; each declares functions and classes only, but for the last.
cmake_minimum_required(VERSION 3.25)
set(MODULES dom format data colours layout scene paint plot drawing table lists epochs distribution details search page)

file(READ ${FOLDER}/page.html page)
file(READ ${FOLDER}/style.css style)
set(script "")
foreach(module IN LISTS MODULES)
  file(READ ${FOLDER}/${module}.js text)
  string(APPEND script "${text}\n")
endforeach()
string(REPLACE "@style@" "${style}" page "${page}")
string(REPLACE "@script@" "${script}" page "${page}")
file(WRITE ${OUTPUT} "#include \"host/results/page_text.h\"\n\nconst char *const vornhost::page_text = R\"vornpage(${page})vornpage\";\n")
