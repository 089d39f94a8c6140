#!/bin/bash
cd / # a folder that any user can enter
/run/tree/tests/macos_scripts/macos_scripts.sh /run/tree/resources/macos
