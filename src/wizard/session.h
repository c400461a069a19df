// One run of the wizard: fills the answer store, settles what is set up and where, shows the menu,
// runs the chosen flow, saves the answers for the next run. Both programs run it; a rehearsal takes
// its steps one by one.
#pragma once

// Runs the wizard in the current directory. Returns 0 if the administrator quits from the menu,
// else 1.
int gxsetup_main();

// The flows by number. The menu offers all but the customise flow.
enum flow_number : int {
    flow_none = 0,
    flow_install = 1,
    flow_upgrade = 2,
    flow_customise = 3,
    flow_remove = 4
};

// Fills the answer store and asks for the flow. Returns it, flow_none to quit.
flow_number begin_session();

// Runs a flow on the answer store, and each flow that one asks for instead, until one ends. Returns
// the result of that one: 0 for failure.
int run_flows(flow_number flow);

// Prints the closing lines for the answer `action` and copies the log into the installation
// directory (not after a removal).
void print_end(int success);
