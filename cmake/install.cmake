message(STATUS "install rules")
