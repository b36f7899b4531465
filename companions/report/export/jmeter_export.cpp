#include "companions/report/export/csv_fields.h"
#include "companions/report/export/export_formats.h"
#include "companions/report/export/request_url.h"
#include "companions/report/export/xml_text.h"

#include <algorithm>
#include <fmt/core.h>
#include <string_view>

namespace {

constexpr std::string_view methods[] = {"GET",     "POST",  "HEAD",   "PUT",
                                        "OPTIONS", "TRACE", "DELETE", "PATCH"};

// Each row of the data is one turn of a user of the thread group, and its count how often the
// request is made in it. A body file alone, without a parameter's name, is sent as it is.
constexpr const char* plan = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- Each request once: jmeter -n -t FILE -l results.jtl -Jthreads=N -->
<jmeterTestPlan version="1.2" properties="5.0" jmeter="5.6.3">
  <hashTree>
    <TestPlan guiclass="TestPlanGui" testclass="TestPlan" testname="Exported load" enabled="true">
      <boolProp name="TestPlan.functional_mode">false</boolProp>
      <boolProp name="TestPlan.serialize_threadgroups">false</boolProp>
      <elementProp name="TestPlan.user_defined_variables" elementType="Arguments">
        <collectionProp name="Arguments.arguments"/>
      </elementProp>
    </TestPlan>
    <hashTree>
      <ThreadGroup guiclass="ThreadGroupGui" testclass="ThreadGroup" testname="Users" enabled="true">
        <stringProp name="ThreadGroup.on_sample_error">continue</stringProp>
        <elementProp name="ThreadGroup.main_controller" elementType="LoopController">
          <boolProp name="LoopController.continue_forever">false</boolProp>
          <intProp name="LoopController.loops">-1</intProp>
        </elementProp>
        <stringProp name="ThreadGroup.num_threads">${{__P(threads,1)}}</stringProp>
        <stringProp name="ThreadGroup.ramp_time">0</stringProp>
        <boolProp name="ThreadGroup.scheduler">false</boolProp>
      </ThreadGroup>
      <hashTree>
        <CSVDataSet guiclass="TestBeanGUI" testclass="CSVDataSet" testname="Targets" enabled="true">
          <stringProp name="filename">{1}</stringProp>
          <stringProp name="fileEncoding">UTF-8</stringProp>
          <stringProp name="variableNames">method,url,host,label,bodies,body_file,count</stringProp>
          <stringProp name="delimiter">,</stringProp>
          <boolProp name="quotedData">true</boolProp>
          <boolProp name="recycle">false</boolProp>
          <boolProp name="stopThread">true</boolProp>
          <stringProp name="shareMode">shareMode.all</stringProp>
        </CSVDataSet>
        <hashTree/>
        <HeaderManager guiclass="HeaderPanel" testclass="HeaderManager" testname="Headers" enabled="true">
          <collectionProp name="HeaderManager.headers">
            <elementProp name="Host" elementType="Header">
              <stringProp name="Header.name">Host</stringProp>
              <stringProp name="Header.value">${{host}}</stringProp>
            </elementProp>
          </collectionProp>
        </HeaderManager>
        <hashTree/>
        <LoopController guiclass="LoopControlPanel" testclass="LoopController" testname="As often as it counts" enabled="true">
          <boolProp name="LoopController.continue_forever">true</boolProp>
          <stringProp name="LoopController.loops">${{count}}</stringProp>
        </LoopController>
        <hashTree>
          <SwitchController guiclass="SwitchControllerGui" testclass="SwitchController" testname="With or without body" enabled="true">
            <stringProp name="SwitchController.value">${{bodies}}</stringProp>
          </SwitchController>
          <hashTree>
            <HTTPSamplerProxy guiclass="HttpTestSampleGui" testclass="HTTPSamplerProxy" testname="${{label}}" enabled="true">
{0}            </HTTPSamplerProxy>
            <hashTree/>
            <HTTPSamplerProxy guiclass="HttpTestSampleGui" testclass="HTTPSamplerProxy" testname="${{label}}" enabled="true">
              <elementProp name="HTTPsampler.Files" elementType="HTTPFileArgs">
                <collectionProp name="HTTPFileArgs.files">
                  <elementProp name="${{body_file}}" elementType="HTTPFileArg">
                    <stringProp name="File.path">${{body_file}}</stringProp>
                    <stringProp name="File.paramname"></stringProp>
                    <stringProp name="File.mimetype">{2}</stringProp>
                  </elementProp>
                </collectionProp>
              </elementProp>
{0}            </HTTPSamplerProxy>
            <hashTree/>
          </hashTree>
        </hashTree>
      </hashTree>
    </hashTree>
  </hashTree>
</jmeterTestPlan>
)";

// What both samplers have, the one without body and the one with it.
constexpr const char* request =
    R"(              <elementProp name="HTTPsampler.Arguments" elementType="Arguments">
                <collectionProp name="Arguments.arguments"/>
              </elementProp>
              <stringProp name="HTTPSampler.path">${url}</stringProp>
              <stringProp name="HTTPSampler.method">${method}</stringProp>
              <boolProp name="HTTPSampler.follow_redirects">true</boolProp>
              <boolProp name="HTTPSampler.auto_redirects">false</boolProp>
              <boolProp name="HTTPSampler.use_keepalive">true</boolProp>
              <boolProp name="HTTPSampler.DO_MULTIPART_POST">false</boolProp>
              <stringProp name="HTTPSampler.implementation">HttpClient4</stringProp>
)";

// Under which results are gathered.
std::string label_of(const LoadTarget& target) {
    return target.transaction.empty()
               ? target.method + " " + target.url.substr(0, target.url.find('?'))
               : target.transaction;
}

bool has_double_slash(const std::string& url) {
    const std::string path = url.substr(0, url.find('?'));
    return path.find("//", path.find("://") + 3) != std::string::npos;
}

// What JMeter does to requests by itself.
void note_changes(const LoadTarget& target, ExportNotes& notes) {
    if (has_double_slash(target.url)) {
        notes.change("with // in the path, of which JMeter makes /", target.count);
    }
    const bool has_port = target.host.find(':') != std::string::npos;
    if (!has_port && authority_of(target.url).find(':') != std::string_view::npos) {
        notes.change("in whose header Host JMeter adds the port of the base URL", target.count);
    }
}

} // namespace

bool fits_jmeter(LoadTarget& target, ExportNotes& notes) {
    const bool is_known =
        std::find(std::begin(methods), std::end(methods), target.method) != std::end(methods);
    if (!is_known) {
        notes.leave_out("whose method JMeter does not have", target.count);
        return false;
    }
    note_changes(target, notes);
    return true;
}

void export_jmeter(const Targets& targets, FILE* out) {
    targets([out](const LoadTarget& target) {
        fmt::print(out, "{},{},{},{},{},{},{}\n", target.method, csv_field(target.url), target.host,
                   csv_field(label_of(target)), target.body_file.empty() ? 0 : 1,
                   csv_field(target.body_file), target.count);
    });
}

void write_jmeter_plan(const std::string& data_name, FILE* out) {
    fmt::print(out, fmt::runtime(plan), request, xml_text(data_name), body_content_type);
}
