#!/bin/bash
cd / # a folder that any user can enter
/run/tree/tests/access/access_scripts.sh /run/tree/resources
