include("${CMAKE_CURRENT_LIST_DIR}/VNbaseTargets.cmake")
